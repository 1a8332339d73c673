#include "OrvaneSyncCore/Services/Waveform/WaveformFile.h"
#include "OrvaneSyncCore/Utilities/QuickHash.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

/// The key under which a seed is kept.
constexpr const char* key = "take";

/// A result that can be read can be used, and is the same after it was written and read again.
void check(const std::string& bytes) {
    const auto waveform = orvane::waveformFromBytes(bytes, key);
    if (!waveform) return;
    orvane::toJSON(*waveform, orvane::onsetMarkersOf(*waveform)).dump();
    if (orvane::waveformFromBytes(orvane::waveformBytes(key, *waveform), key) != waveform) std::abort();
}

} // namespace

// A file of any bytes, unchanged and with the right hash of what follows its name and hash.
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
