#include "OrvaneSyncApp/ViewModels/Timeline/WaveformTile.h"

#include <algorithm>
#include <cmath>

namespace orvane {

namespace {

/// The part of a pixel (0 to 1), at a distance from the middle, that a bar with that reach covers.
float coverage(float reach, int distance) {
    return std::clamp(reach - static_cast<float>(distance), 0.0F, 1.0F);
}

std::uint32_t mixed(std::uint32_t under, std::uint32_t over, float share) {
    std::uint32_t result = 0;
    for (int shift = 0; shift < 32; shift += 8) {
        const auto low = static_cast<float>((under >> shift) & 0xFFU);
        const auto high = static_cast<float>((over >> shift) & 0xFFU);
        result |= static_cast<std::uint32_t>(std::lround(low + (high - low) * share)) << shift;
    }
    return result;
}

} // namespace

WaveformTile::Column WaveformTile::column(int at) const {
    const double begin = static_cast<double>(firstColumn + at) * binsPerColumn;
    const double count = static_cast<double>(peaks.size());
    if (begin < 0 || begin >= count) return {};
    const auto first = static_cast<std::size_t>(begin);
    const auto last =
        static_cast<std::size_t>(std::min(std::max(std::ceil(begin + binsPerColumn), begin + 1), count));
    Column result;
    for (std::size_t bin = first; bin < last; ++bin) {
        result.peak = std::max(result.peak, peaks[bin]);
        result.rms = std::max(result.rms, rms[bin]);
    }
    return result;
}

std::vector<std::uint32_t> drawn(const WaveformTile& tile, std::uint32_t ground, std::uint32_t peakColour,
                                 std::uint32_t levelColour) {
    constexpr auto width = static_cast<std::size_t>(WaveformTile::width);
    std::vector<std::uint32_t> pixels(width * static_cast<std::size_t>(tile.height), ground);
    const int half = tile.height / 2;
    const auto scale = static_cast<float>(half) * tile.gain;
    constexpr float line = 0.5F; // so that silence is a thin line
    for (int x = 0; x < WaveformTile::width; ++x) {
        const double bin = static_cast<double>(tile.firstColumn + x) * tile.binsPerColumn;
        if (bin < 0 || bin >= static_cast<double>(tile.peaks.size())) continue;
        const WaveformTile::Column column = tile.column(x);
        const float peak = std::max(std::min(column.peak * scale, static_cast<float>(half)), line);
        const float level = std::min(column.rms * scale, static_cast<float>(half));
        for (int distance = 0; distance < half && static_cast<float>(distance) < peak; ++distance) {
            const std::uint32_t solid = mixed(peakColour, levelColour, coverage(level, distance));
            const std::uint32_t pixel = mixed(ground, solid, coverage(peak, distance));
            pixels[static_cast<std::size_t>(half - 1 - distance) * width + static_cast<std::size_t>(x)] =
                pixel;
            pixels[static_cast<std::size_t>(half + distance) * width + static_cast<std::size_t>(x)] = pixel;
        }
    }
    return pixels;
}

} // namespace orvane
