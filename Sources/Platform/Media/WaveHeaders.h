#pragma once

#include "Platform/MediaInspector.h"
#include "Platform/RandomAccessFile.h"

#include <cstdint>
#include <optional>

namespace orvane::platform {

/// Duration, channels, rate and dates of a RIFF/WAVE file, RF64 and BW64 included, from its chunk headers.
/// Wrong sizes (0 or all ones in a recording that was cut off, or past the end of the file) are read as "to
/// the end of the file". Nothing for any other kind of file.
std::optional<MediaInspection> inspectWave(RandomAccessFile& file);

/// Place and form of the samples of an uncompressed WAVE file: little-endian, interleaved.
struct WaveSamples {
    std::uint16_t channels = 0;
    std::uint32_t sampleRate = 0; ///< Hz
    bool isFloat = false;
    int bits = 0;                     ///< of a sample, a multiple of 8
    std::uint64_t dataAt = 0;         ///< position in the file
    std::uint64_t frames = 0;         ///< that are present
    std::uint64_t promisedFrames = 0; ///< that the header states; the same as `frames` if it states none

    std::uint32_t bytesPerFrame() const { return channels * static_cast<std::uint32_t>(bits / 8); }
};

/// Nothing for any other kind of file, and if the header contradicts itself.
std::optional<WaveSamples> locateWaveSamples(RandomAccessFile& file);

} // namespace orvane::platform
