#include "Platform/Media/MovieHeaders.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

bool isNumber(const std::optional<double>& value, double least) {
    return !value || (std::isfinite(*value) && *value >= least);
}

} // namespace

// A movie of any bytes: it is read or refused, and every number of the result is finite.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvane::platform;
    auto file = RandomAccessFile::overBytes(std::as_bytes(std::span(data, size)));
    const auto movie = inspectMovie(file);
    if (!movie) return 0;
    bool isSound = isNumber(movie->durationSeconds, 0);
    for (const auto& track : movie->videoTracks)
        isSound = isSound && isNumber(track.width, 1) && isNumber(track.height, 1) &&
                  isNumber(track.nominalFrameRate, 0);
    for (const auto& track : movie->audioTracks)
        isSound = isSound && isNumber(track.sampleRate, 0) && track.channelCount.value_or(1) > 0;
    for (const auto& item : movie->metadata)
        isSound = isSound && (!item.string || item.string->size() <= 4 * size + 3);
    if (!isSound) std::abort();
    return 0;
}
