#include "Platform/Playback/AttackSearch.h"

#include "Platform/VectorOps.h"

#include <algorithm>
#include <cmath>

namespace orvane::platform {

namespace {

constexpr double hopSeconds = 0.001;
// Longer than a period of a low voice.
constexpr std::size_t hopsBefore = 25;
constexpr std::size_t hopsBetween = 40;
constexpr double leastRise = 4;
constexpr float leastPeak = 0.02F;
// Quieter peaks count as this: a click over digital silence is not infinitely loud.
constexpr float floorPeak = 0.001F;

std::int64_t floorDivided(std::int64_t value, std::int64_t by) {
    return value >= 0 ? value / by : -((-value + by - 1) / by);
}

} // namespace

AttackSearch::AttackSearch(double sampleRate)
    : hopFrames_(std::max<std::int64_t>(std::llround(sampleRate * hopSeconds), 1)) {}

/// A hop relative to the loudest one shortly before; 0 if it is no attack.
double AttackSearch::rise(std::size_t hop) const {
    const float peak = peaks_[hop];
    if (peak < leastPeak) return 0;
    const auto end = peaks_.begin() + static_cast<std::ptrdiff_t>(hop);
    const float before = *std::max_element(end - static_cast<std::ptrdiff_t>(hopsBefore), end);
    const double rise = peak / std::max(before, floorPeak);
    return rise >= leastRise ? rise : 0;
}

const std::vector<std::int64_t>& AttackSearch::attacks(SampleWindow& window, std::int64_t first,
                                                       std::int64_t end, bool isReverse) {
    found_.clear();
    if (end <= first) return found_;
    const std::int64_t firstHop = floorDivided(first, hopFrames_);
    const auto hops = static_cast<std::size_t>(floorDivided(end - 1, hopFrames_) - firstHop + 1);
    constexpr std::size_t lead = hopsBefore + hopsBetween;
    const std::int64_t start = (firstHop - static_cast<std::int64_t>(lead)) * hopFrames_;
    const std::size_t length = lead + hops + hopsBetween;
    const auto hopLength = static_cast<std::size_t>(hopFrames_);
    const auto channels = window.frames(start, length * hopLength, isReverse);
    peaks_.assign(length, 0);
    for (const float* const channel : channels.first(std::min<std::size_t>(channels.size(), 2)))
        for (std::size_t hop = 0; hop < length; ++hop)
            peaks_[hop] = std::max(peaks_[hop], vector::maxMagnitude({channel + hop * hopLength, hopLength}));
    rises_.assign(length, 0);
    for (std::size_t hop = hopsBefore; hop < length; ++hop) rises_[hop] = rise(hop);
    for (std::size_t hop = lead; hop < lead + hops; ++hop) {
        if (rises_[hop] == 0) continue;
        const auto around = std::span(rises_).subspan(hop - hopsBetween, 2 * hopsBetween + 1);
        if (rises_[hop] < *std::ranges::max_element(around)) continue;
        found_.push_back(start + static_cast<std::int64_t>(hop) * hopFrames_);
    }
    return found_;
}

} // namespace orvane::platform
