#include "OrvaneSyncCore/Services/SmartAudio/TakeStatistics.h"

#include "OrvaneSyncCore/Services/SmartAudio/RoutingWindows.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

namespace orvane::SmartAudioBlockRouter {

namespace {

constexpr float digitalSilenceRMS = 0.00017782794F; // -75 dBFS; quieter windows do not show the noise of the
                                                    // room
constexpr double noiseFloorShare = 0.2;             // of the windows, the quietest ones
constexpr double quietestNoiseFloorDB = -65.0;
constexpr double loudestNoiseFloorDB = -25.0;
constexpr float minCrestRMS = 1e-5F;
constexpr double unknownCrestDB = 6.0;

using Windows = std::vector<WindowMetrics>;

std::map<int, Windows> windowsByTrack(std::span<const PerWindowFrame> frames) {
    std::map<int, Windows> tracks;
    for (const PerWindowFrame& frame : frames)
        for (const WindowMetrics& window : frame.perChannel) tracks[window.trackIndex].push_back(window);
    return tracks;
}

/// The value that would be at this index if the values were sorted.
template <class T>
T ranked(std::vector<T>& values, std::size_t position) {
    const auto at = values.begin() + static_cast<std::ptrdiff_t>(position);
    std::nth_element(values.begin(), at, values.end());
    return *at;
}

double noiseFloorDB(const Windows& windows) {
    std::vector<float> levels;
    levels.reserve(windows.size());
    for (const WindowMetrics& window : windows)
        if (window.rms > digitalSilenceRMS) levels.push_back(window.rms);
    if (levels.empty()) return quietestNoiseFloorDB;
    const auto share = static_cast<std::size_t>(static_cast<double>(levels.size()) * noiseFloorShare);
    const double floor = levelDB(ranked(levels, std::min(levels.size() - 1, share)), windowLevelFloor);
    return std::clamp(floor, quietestNoiseFloorDB, loudestNoiseFloorDB);
}

double typicalCrestFactorDB(const Windows& windows) {
    std::vector<double> ratios;
    ratios.reserve(windows.size());
    for (const WindowMetrics& window : windows)
        if (window.hasSpeech && window.rms > minCrestRMS && window.rms < window.peakAbs)
            ratios.push_back(double{window.peakAbs} / double{window.rms});
    if (ratios.empty()) return unknownCrestDB;
    return levelDB(ranked(ratios, ratios.size() / 2), 0);
}

double speechCoverage(const Windows& windows) {
    const auto spoken = std::ranges::count_if(windows, &WindowMetrics::hasSpeech);
    return static_cast<double>(spoken) / static_cast<double>(std::max<std::size_t>(1, windows.size()));
}

double rmsVarianceDB(const Windows& windows) {
    std::vector<double> levels;
    levels.reserve(windows.size());
    for (const WindowMetrics& window : windows)
        if (double{window.rms} > windowLevelFloor) levels.push_back(levelDB(window.rms, 0));
    if (levels.size() < 2) return 0;
    const auto count = static_cast<double>(levels.size());
    double sum = 0;
    for (const double level : levels) sum += level;
    const double mean = sum / count;
    double squares = 0;
    for (const double level : levels) squares += (level - mean) * (level - mean);
    return std::sqrt(squares / count);
}

double meanLevelDB(const Windows& windows) {
    double sum = 0;
    for (const WindowMetrics& window : windows) sum += double{window.rms};
    return levelDB(sum / static_cast<double>(windows.size()), takeLevelFloor);
}

/// Tracks with equal levels stay in the order of their numbers.
void rankByLevel(TakeStatistics& stats, std::vector<std::pair<double, int>> levels) {
    std::ranges::sort(levels);
    const std::size_t last = std::max<std::size_t>(levels.size(), 2) - 1;
    for (std::size_t i = 0; i < levels.size(); ++i)
        stats[levels[i].second].takeDominance = static_cast<double>(i) / static_cast<double>(last);
}

} // namespace

TakeStatistics computeChannelStats(std::span<const PerWindowFrame> frames) {
    TakeStatistics stats;
    std::vector<std::pair<double, int>> levels;
    for (const auto& [track, windows] : windowsByTrack(frames)) {
        stats[track] = {.trackIndex = track,
                        .noiseFloorDB = noiseFloorDB(windows),
                        .typicalCrestFactorDB = typicalCrestFactorDB(windows),
                        .takeDominance = 0,
                        .speechCoverage = speechCoverage(windows),
                        .rmsVarianceDB = rmsVarianceDB(windows)};
        levels.emplace_back(meanLevelDB(windows), track);
    }
    rankByLevel(stats, std::move(levels));
    return stats;
}

} // namespace orvane::SmartAudioBlockRouter
