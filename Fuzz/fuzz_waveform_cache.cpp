#include "OrvaneSyncCore/Services/Waveform/WaveformFile.h"
#include "OrvaneSyncCore/Utilities/QuickHash.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

/// What a seed is kept under.
constexpr const char* key = "take";

/// What can be read can be used, and comes back the same from its own bytes.
void check(const std::string& bytes) {
    const auto waveform = orvane::waveformFromBytes(bytes, key);
    if (!waveform) return;
    orvane::toJSON(*waveform, orvane::onsetMarkersOf(*waveform)).dump();
    if (orvane::waveformFromBytes(orvane::waveformBytes(key, *waveform), key) != waveform) std::abort();
}

} // namespace

// A file of any bytes, as it stands and with the right hash over what follows its name and hash.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string bytes(reinterpret_cast<const char*>(data), size);
    check(bytes);
    constexpr std::size_t nameLength = 8, hashed = nameLength + sizeof(std::uint64_t);
    if (size < hashed) return 0;
    const std::uint64_t hash = orvane::quickHash(std::string_view(bytes).substr(hashed));
    std::memcpy(bytes.data() + nameLength, &hash, sizeof hash);
    check(bytes);
    return 0;
}
