#include "OrvaneSyncCore/Services/Waveform/OnsetDetector.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace orvane {

namespace {

constexpr std::size_t fewestBins = 5;
/// Linear; a lower level is never an onset, however quiet the rest is.
constexpr float lowestThreshold = 0.02F;

/// The gap in bins; limited for gaps that are longer than any envelope.
std::int64_t wholeBins(double bins) {
    constexpr double most = 1e15;
    return static_cast<std::int64_t>(std::clamp(bins, 0.0, most));
}

/// The level that a fifth of the bins does not exceed.
float floorOf(std::span<const float> rms) {
    std::vector<float> values(rms.begin(), rms.end());
    const auto fifth = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 5);
    std::ranges::nth_element(values, fifth);
    return *fifth;
}

} // namespace

std::vector<double> OnsetDetector::detect(std::span<const float> rms, double binsPerSecond,
                                          double minGapSeconds, float thresholdMultiplier) {
    if (rms.size() < fewestBins || !(binsPerSecond > 0)) return {};
    const float threshold = std::max(floorOf(rms) * thresholdMultiplier, lowestThreshold);
    const std::int64_t gap = wholeBins(binsPerSecond * minGapSeconds);
    std::vector<double> onsets;
    std::int64_t last = -gap;
    bool wasAbove = false;
    for (std::size_t i = 1; i < rms.size(); ++i) {
        const bool isAbove = rms[i] > threshold;
        const auto bin = static_cast<std::int64_t>(i);
        if (isAbove && !wasAbove && bin - last >= gap) {
            onsets.push_back(static_cast<double>(i) / binsPerSecond);
            last = bin;
        }
        wasAbove = isAbove;
    }
    return onsets;
}

double OnsetDetector::snap(double time, std::span<const double> onsets, double thresholdSeconds) {
    if (onsets.empty()) return time;
    const auto distance = [time](double onset) { return std::abs(onset - time); };
    const double nearest = *std::ranges::min_element(onsets, {}, distance);
    return distance(nearest) < thresholdSeconds ? nearest : time;
}

std::optional<double> OnsetDetector::nearestOnsetBefore(double time, std::span<const double> onsets,
                                                        double minGapSeconds) {
    const auto end = std::ranges::lower_bound(onsets, time - minGapSeconds);
    return end == onsets.begin() ? std::nullopt : std::optional(*std::prev(end));
}

std::optional<double> OnsetDetector::nearestOnsetAfter(double time, std::span<const double> onsets,
                                                       double minGapSeconds) {
    const auto first = std::ranges::upper_bound(onsets, time + minGapSeconds);
    return first == onsets.end() ? std::nullopt : std::optional(*first);
}

} // namespace orvane
