#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace orvane {

/// A part of a drawn waveform: `width` columns, starting at column `firstColumn` of the recording.
struct WaveformTile {
    static constexpr int width = 256; ///< pixels

    std::span<const float> peaks; ///< linear, one for each bin
    std::span<const float> rms;
    double binsPerColumn = 1;
    std::int64_t firstColumn = 0;
    int height = 0; ///< pixels
    float gain = 1; ///< the factor by which full height becomes 1

    /// One column; all values are 0 after the end.
    struct Column {
        float peak = 0, rms = 0;
    };
    Column column(int at) const;
};

/// Bars around the middle: the peaks in one colour, the levels over them in another, on a background. Colours
/// are 0xAARRGGBB; returns `height` rows of them. Pure function; any thread.
std::vector<std::uint32_t> drawn(const WaveformTile& tile, std::uint32_t ground, std::uint32_t peakColour,
                                 std::uint32_t levelColour);

} // namespace orvane
