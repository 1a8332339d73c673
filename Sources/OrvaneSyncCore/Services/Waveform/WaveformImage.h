#pragma once

#include "OrvaneSyncCore/Services/Waveform/WaveformResult.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace orvane {

/// A drawn waveform: a bar for each bin around the middle, the peaks with the levels drawn over them. One
/// byte for each pixel, rows from the top; a view colours it with a palette of 256 colours.
struct WaveformImage {
    static constexpr std::uint8_t levelBit = 0x80;     ///< the pixel is inside the bar of the level
    static constexpr std::uint8_t mostCoverage = 0x7F; ///< the other bits: how much a bar covers of the pixel
    static constexpr double levelOpacity = 0.4;
    static constexpr std::size_t height = 130;

    std::size_t width = 0;
    std::vector<std::uint8_t> pixels;

    bool isEmpty() const { return pixels.empty(); }
};

/// With this gain the highest peak of all channels fills the height; all images of a recording use the same.
/// 1 for silence.
float displayGain(const WaveformResult& waveform);

/// `width` pixels; empty without bins. Pure; any thread.
WaveformImage drawnWaveform(std::span<const float> peaks, std::span<const float> rms, float gain,
                            std::size_t width);

/// The bytes of a PNG file in this program's colours, on a transparent background. Throws std::runtime_error
/// for an empty image.
std::string pngOf(const WaveformImage& image);

} // namespace orvane
