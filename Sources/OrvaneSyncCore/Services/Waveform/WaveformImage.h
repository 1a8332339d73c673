#pragma once

#include "OrvaneSyncCore/Services/Waveform/WaveformResult.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace orvane {

/// A drawn waveform: bars round the middle, one a bin, the peaks at full strength and the levels over them.
/// One byte a pixel, rows from the top; a view colours it by a palette of 256.
struct WaveformImage {
    static constexpr std::uint8_t levelBit = 0x80;     ///< of a pixel within the bar of the level
    static constexpr std::uint8_t mostCoverage = 0x7F; ///< the other bits: how much of it a bar covers
    static constexpr double levelOpacity = 0.4;
    static constexpr std::size_t height = 130;

    std::size_t width = 0;
    std::vector<std::uint8_t> pixels;

    bool isEmpty() const { return pixels.empty(); }
};

/// Fills the height with the highest peak of all channels, which all images of a recording share; 1 for
/// silence.
float displayGain(const WaveformResult& waveform);

/// `width` pixels; empty without bins. Pure; any thread.
WaveformImage drawnWaveform(std::span<const float> peaks, std::span<const float> rms, float gain,
                            std::size_t width);

/// The bytes of a PNG file in the colours of this program's marks, on a clear ground. Throws
/// std::runtime_error for an empty image.
std::string pngOf(const WaveformImage& image);

} // namespace orvane
