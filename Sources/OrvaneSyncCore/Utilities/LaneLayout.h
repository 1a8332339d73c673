#pragma once

#include <vector>

namespace orvane {

/// Places time intervals on rows (lanes) so that those that overlap are on different rows. Pure; any thread.
namespace LaneLayout {

struct Interval {
    double start = 0; ///< seconds
    double end = 0;   ///< seconds
};

/// The lane of each interval, from 0, in the order of the input. Each interval gets the first lane that is
/// free at its start. Intervals that only touch share a lane.
std::vector<int> assignLanes(const std::vector<Interval>& intervals);

} // namespace LaneLayout
} // namespace orvane
