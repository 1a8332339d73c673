#include "OrvaneSyncCore/Services/Ingest/TimecodeTrackReader.h"
#include "Platform/RandomAccessFile.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

// A movie of any bytes has a start or none; a start has a text, and either no rate or one within limits.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvane;
    auto file = platform::RandomAccessFile::overBytes(std::as_bytes(std::span(data, size)));
    const auto start = TimecodeTrackReader::read(file);
    if (!start) return 0;
    if (start->timecode.size() < 11) std::abort();
    if (start->projectFrameRate && !(*start->projectFrameRate > 0 && *start->projectFrameRate <= 240))
        std::abort();
    return 0;
}
