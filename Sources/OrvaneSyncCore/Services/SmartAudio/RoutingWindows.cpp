#include "OrvaneSyncCore/Services/SmartAudio/RoutingWindows.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace orvane::SmartAudioBlockRouter {

double levelDB(double linear, double floor) {
    constexpr double largest = std::numeric_limits<float>::max();
    return linear > floor ? 20 * std::log10(std::min(linear, largest)) : silentLevelDB;
}

std::size_t wholeWindows(double seconds, double windowSeconds, std::size_t most) {
    const double windows = std::round(seconds / windowSeconds);
    if (!(windows > 0)) return 0;
    return windows < static_cast<double>(most) ? static_cast<std::size_t>(windows) : most;
}

WindowRange windowsBetween(double startSeconds, double endSeconds, double windowSeconds,
                           std::size_t frameCount) {
    return {wholeWindows(startSeconds, windowSeconds, frameCount),
            wholeWindows(endSeconds, windowSeconds, frameCount)};
}

const WindowMetrics* metricsOf(const PerWindowFrame& frame, int track) {
    const auto& channels = frame.perChannel;
    // Nearly every frame has all tracks, so that track n is at index n - 1.
    const auto expected = static_cast<std::size_t>(std::max(track, 1)) - 1;
    if (expected < channels.size() && channels[expected].trackIndex == track) return &channels[expected];
    const auto found = std::ranges::lower_bound(channels, track, {}, &WindowMetrics::trackIndex);
    return found != channels.end() && found->trackIndex == track ? &*found : nullptr;
}

double highestPeak(std::span<const PerWindowFrame> frames, int track) {
    float highest = 0;
    for (const PerWindowFrame& frame : frames)
        if (const WindowMetrics* window = metricsOf(frame, track))
            if (window->peakAbs > highest) highest = window->peakAbs;
    return highest;
}

bool hasSpeech(const PerWindowFrame& frame) {
    return std::ranges::any_of(frame.perChannel, &WindowMetrics::hasSpeech);
}

std::string trackName(int track) { return "T" + std::to_string(track); }

} // namespace orvane::SmartAudioBlockRouter
