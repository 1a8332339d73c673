#include "OrvaneSyncCore/Services/Ingest/ProbeCacheFile.h"
#include "OrvaneSyncCore/Utilities/QuickHash.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace orvane;

void demand(bool holds) {
    if (!holds) std::abort();
}

/// A record that can be decoded is the same when it is encoded and decoded again.
void checkRecord(const ProbeRecord& record) {
    demand(ProbeRecord::fromBytes(record.bytes()).has_value());
    const auto asset = decodedAsset(record);
    if (!asset) return;
    ProbeRecord again = record;
    const std::string body = encodedAsset(*asset);
    again.body = body;
    const auto second = decodedAsset(again);
    demand(second && encodedAsset(*second) == body && second->id == asset->id);
}

} // namespace

// A cache file of any bytes; and the same bytes as a record and as an asset, which bypasses the checksum.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    if (const auto file = ProbeCacheFile::fromBytes(bytes)) {
        std::vector<std::string> records;
        for (std::size_t i = 0; i < file->count(); ++i) {
            const auto record = file->record(i);
            if (!record) continue;
            checkRecord(*record);
            file->find(record->path);
            records.push_back(record->bytes());
        }
        const auto again = ProbeCacheFile::fromBytes(ProbeCacheFile::bytes(records));
        demand(again && again->count() == records.size());
    }
    std::string sealed = std::string(sizeof(std::uint64_t), '\0') + bytes;
    const std::uint64_t checksum = quickHash(bytes);
    std::memcpy(sealed.data(), &checksum, sizeof checksum);
    if (const auto record = ProbeRecord::fromBytes(sealed)) checkRecord(*record);
    ProbeRecord record;
    record.path = "/a.wav";
    record.body = bytes;
    checkRecord(record);
    return 0;
}
