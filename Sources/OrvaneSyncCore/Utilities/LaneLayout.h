#pragma once

#include <vector>

namespace orvane {

/// Puts stretches of time that overlap on rows of their own. Pure; any thread.
namespace LaneLayout {

struct Interval {
    double start = 0; ///< seconds
    double end = 0;   ///< seconds
};

/// The lane of each interval, from 0, in the order of the input: each takes the first lane that is free when
/// it starts. Intervals that touch share a lane.
std::vector<int> assignLanes(const std::vector<Interval>& intervals);

} // namespace LaneLayout
} // namespace orvane
