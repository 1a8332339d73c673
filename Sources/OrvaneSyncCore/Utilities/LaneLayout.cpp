#include "OrvaneSyncCore/Utilities/LaneLayout.h"

#include <algorithm>
#include <compare>
#include <cstddef>
#include <numeric>

namespace orvane {

std::vector<int> LaneLayout::assignLanes(const std::vector<Interval>& intervals) {
    std::vector<std::size_t> order(intervals.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::stable_sort(order, [&](std::size_t a, std::size_t b) {
        return std::weak_order(intervals[a].start, intervals[b].start) <
               0; // a valid order even if a start is not a number
    });

    std::vector<double> laneEnds;
    std::vector<int> lanes(intervals.size());
    for (const std::size_t i : order) {
        const auto isFree = [&](double end) { return end <= intervals[i].start; };
        auto lane = std::ranges::find_if(laneEnds, isFree);
        if (lane == laneEnds.end()) lane = laneEnds.insert(lane, 0);
        *lane = intervals[i].end;
        lanes[i] = static_cast<int>(lane - laneEnds.begin());
    }
    return lanes;
}

} // namespace orvane
