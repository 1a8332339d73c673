#include "OrvaneSyncCore/Services/Waveform/WaveformImage.h"

#include "OrvaneSyncCore/Services/Persistence/OutputMarks.h"
#include "Platform/PNG.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace orvane {

namespace {

constexpr float filledHeight = 0.95F;
constexpr float quietestPeak = 0.001F;
constexpr double gapBetweenBars = 0.3; ///< points, if a bin is at least one point wide

/// The bars that touch a column: the highest ones, and how much of its width they cover.
struct Column {
    float peak = 0, rms = 0;
    double coverage = 0;
};

std::vector<Column> columnsOf(std::span<const float> peaks, std::span<const float> rms, std::size_t width) {
    std::vector<Column> columns(width);
    const double binWidth = static_cast<double>(width) / static_cast<double>(peaks.size());
    const double barWidth = binWidth >= 1 ? binWidth - gapBetweenBars : 1;
    for (std::size_t bin = 0; bin < peaks.size(); ++bin) {
        const double left = static_cast<double>(bin) * binWidth;
        const double right = std::min(left + barWidth, static_cast<double>(width));
        for (auto x = static_cast<std::size_t>(left); static_cast<double>(x) < right; ++x) {
            const auto column = static_cast<double>(x);
            columns[x].peak = std::max(columns[x].peak, peaks[bin]);
            columns[x].rms = std::max(columns[x].rms, rms[bin]);
            columns[x].coverage += std::min(right, column + 1) - std::max(left, column);
        }
    }
    return columns;
}

} // namespace

float displayGain(const WaveformResult& waveform) {
    float highest = 0;
    const auto consider = [&](const std::vector<float>& peaks) {
        for (const float peak : peaks) highest = std::max(highest, peak);
    };
    consider(waveform.peaks);
    for (const auto& channel : waveform.peaksPerChannel) consider(channel);
    return highest > quietestPeak ? filledHeight / highest : 1.0F;
}

WaveformImage drawnWaveform(std::span<const float> peaks, std::span<const float> rms, float gain,
                            std::size_t width) {
    if (peaks.empty() || width == 0) return {};
    WaveformImage image{.width = width, .pixels = std::vector<std::uint8_t>(width * WaveformImage::height)};
    constexpr std::size_t half = WaveformImage::height / 2;
    const std::vector<Column> columns = columnsOf(peaks, rms, width);
    // Row by row, in the order of memory: a row at this distance from the middle is covered by the bars that
    // reach it.
    for (std::size_t distance = 0; distance < half; ++distance) {
        std::uint8_t* above = &image.pixels[(half - 1 - distance) * width];
        std::uint8_t* below = &image.pixels[(half + distance) * width];
        const float reach = static_cast<float>(distance) / (gain * static_cast<float>(half));
        for (std::size_t x = 0; x < width; ++x) {
            const Column& column = columns[x];
            if (!(column.peak > reach)) continue;
            const double coverage = std::min(column.coverage, 1.0) * WaveformImage::mostCoverage;
            auto pixel = static_cast<std::uint8_t>(std::lround(coverage));
            if (column.rms > reach) pixel |= WaveformImage::levelBit;
            above[x] = below[x] = pixel;
        }
    }
    return image;
}

std::string pngOf(const WaveformImage& image) {
    constexpr platform::Colour peak{64, 128, 192, 255};
    constexpr std::uint8_t white = 255;
    const auto over = [&](std::uint8_t below) {
        return static_cast<std::uint8_t>(std::lround(below + (white - below) * WaveformImage::levelOpacity));
    };
    std::array<platform::Colour, 256> palette;
    for (std::size_t i = 0; i < palette.size(); ++i) {
        const bool isLevel = (i & WaveformImage::levelBit) != 0;
        const auto alpha =
            static_cast<std::uint8_t>((i & WaveformImage::mostCoverage) * 255 / WaveformImage::mostCoverage);
        palette[i] = isLevel ? platform::Colour{over(peak.red), over(peak.green), over(peak.blue), alpha}
                             : platform::Colour{peak.red, peak.green, peak.blue, alpha};
    }
    return platform::encodedPNG({.width = static_cast<std::uint32_t>(image.width),
                                 .height = static_cast<std::uint32_t>(WaveformImage::height),
                                 .pixels = image.pixels,
                                 .palette = palette},
                                renderingMark);
}

} // namespace orvane
