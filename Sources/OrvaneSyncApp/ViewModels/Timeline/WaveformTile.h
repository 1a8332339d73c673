#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace orvane {

/// A part of a drawn waveform: `width` columns from column `firstColumn` of the recording on.
struct WaveformTile {
    static constexpr int width = 256; ///< pixels

    std::span<const float> peaks; ///< linear, one a bin
    std::span<const float> rms;
    double binsPerColumn = 1;
    std::int64_t firstColumn = 0;
    int height = 0; ///< pixels
    float gain = 1; ///< that makes full height 1

    /// Of the columns; 0 behind the end.
    struct Column {
        float peak = 0, rms = 0;
    };
    Column column(int at) const;
};

/// Bars round the middle: the peaks in one colour, the levels over them in another, on a ground. Colours are
/// 0xAARRGGBB; gives `height` rows of them. Pure; any thread.
std::vector<std::uint32_t> drawn(const WaveformTile& tile, std::uint32_t ground, std::uint32_t peakColour,
                                 std::uint32_t levelColour);

} // namespace orvane
