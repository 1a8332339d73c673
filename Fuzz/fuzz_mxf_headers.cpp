#include "Platform/Media/MXFHeaders.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

// An MXF of any bytes: the values read are possible.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvane::platform;
    auto file = RandomAccessFile::overBytes(std::as_bytes(std::span(data, size)));
    const auto mxf = inspectMXF(file);
    if (!mxf) return 0;
    const auto& length = mxf->facts.durationSeconds;
    bool isSound = !length || (std::isfinite(*length) && *length > 0);
    for (const auto& track : mxf->facts.videoTracks)
        isSound = isSound && track.width.value_or(1) >= 1 && track.height.value_or(1) >= 1 &&
                  track.nominalFrameRate.value_or(1) > 0;
    for (const auto& track : mxf->facts.audioTracks)
        isSound = isSound && track.channelCount.value_or(1) > 0 && track.sampleRate.value_or(1) > 0;
    if (const auto& start = mxf->facts.startTimecode)
        isSound = isSound && start->frames >= 0 && start->rateNumerator > 0 && start->rateDenominator > 0;
    if (!isSound) std::abort();
    return 0;
}
