#include "Platform/Media/AIFFHeaders.h"
#include "Platform/Media/WaveHeaders.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

// A WAVE or AIFF file of any bytes: the values read about its sound are possible.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvane::platform;
    auto file = RandomAccessFile::overBytes(std::as_bytes(std::span(data, size)));
    auto wave = inspectWave(file);
    if (!wave) wave = inspectAIFF(file);
    if (!wave) return 0;
    if (wave->durationSeconds && !(std::isfinite(*wave->durationSeconds) && *wave->durationSeconds >= 0))
        std::abort();
    for (const auto& track : wave->audioTracks)
        if (track.channelCount.value_or(1) < 1 || !(track.sampleRate.value_or(1) > 0)) std::abort();
    return 0;
}
