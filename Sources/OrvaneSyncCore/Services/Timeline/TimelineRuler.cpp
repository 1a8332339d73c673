#include "OrvaneSyncCore/Services/Timeline/TimelineRuler.h"

#include "OrvaneSyncCore/Utilities/CountText.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace orvane {

namespace {

constexpr double pointsPerTick = 60;

} // namespace

double TimelineRuler::rulerInterval(double duration, double width) {
    constexpr std::array intervals{0.5, 1.0, 2.0, 5.0, 10.0, 15.0, 30.0, 60.0, 120.0, 300.0};
    constexpr double ofTheLongest = 60;
    const double ideal = duration / (width / pointsPerTick);
    const auto* found = std::ranges::find_if(intervals, [&](double one) { return one >= ideal; });
    return found == intervals.end() ? ofTheLongest : *found;
}

double TimelineRuler::legibleInterval(double interval, double pointsPerSecond) {
    constexpr double hour = 3600;
    constexpr std::array longIntervals{300.0, 600.0, 1800.0, hour, 2 * hour, 6 * hour, 24 * hour};
    constexpr double rounding = 1; // point
    const auto isLegible = [&](double one) { return one * pointsPerSecond >= pointsPerTick - rounding; };
    if (isLegible(interval)) return interval;
    const auto* found = std::ranges::find_if(longIntervals, isLegible);
    return found == longIntervals.end() ? longIntervals.back() : *found;
}

std::string TimelineRuler::formatTime(double seconds) {
    constexpr double most = 1e15;
    constexpr long long perMinute = 60;
    const auto whole = std::isnan(seconds) ? 0LL : static_cast<long long>(std::clamp(seconds, -most, most));
    const long long magnitude = std::abs(whole);
    const std::string rest = std::to_string(magnitude % perMinute);
    return (whole < 0 ? "-" : "") + std::to_string(magnitude / perMinute) + ":" +
           (rest.size() < 2 ? "0" : "") + rest;
}

std::string TimelineRuler::labelText(double seconds) {
    constexpr double anHour = 3600;
    if (!(std::abs(seconds) >= anHour)) return formatTime(seconds);
    return (seconds < 0 ? "-" : "") + clockText(std::trunc(std::abs(seconds)));
}

} // namespace orvane
