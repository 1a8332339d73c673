#include "OrvaneSyncCore/Utilities/ClusterTimelineAxis.h"
#include "OrvaneSyncCore/Utilities/LaneLayout.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace orvane {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();

TEST(LaneLayout, overlapsGetLanesOfTheirOwn) {
    const auto check = [&](const char* name, const std::vector<LaneLayout::Interval>& intervals,
                           const std::vector<int>& lanes) {
        EXPECT_EQ(LaneLayout::assignLanes(intervals), lanes) << name;
    };
    check("nothing", {}, {});
    check("touching ones share a lane", {{0, 10}, {5, 15}, {10, 20}}, {0, 1, 0});
    check("equal ones keep the order of the input", {{3, 4}, {3, 4}}, {0, 1});
    check("the walk goes by start, the result by place", {{8, 9}, {0, 5}, {4, 9}, {4, 6}}, {0, 0, 1, 2});
    check("the first free lane, not the last", {{0, 9}, {1, 3}, {2, 4}, {5, 6}}, {0, 1, 2, 1});
    check("one without length takes no room", {{2, 2}, {2, 5}, {2, 2}}, {0, 0, 1});
    check("what is no number disturbs nobody", {{1, 2}, {nan, nan}, {1, 2}}, {0, 2, 1});
}

TEST(ClusterTimelineAxis, mapsWithinTheAxis) {
    using namespace ClusterTimelineAxis;
    EXPECT_EQ(progress(12, 2, 20), 0.5);
    EXPECT_EQ(progress(1, 2, 20), 0) << "never negative";
    EXPECT_EQ(progress(99, 2, 20), 1);
    EXPECT_EQ(audioClockSeconds(50, 100, 60), 30);
    EXPECT_EQ(audioClockSeconds(150, 100, 60), 60);
    EXPECT_EQ(audioClockSeconds(-1, 100, 60), 0);
    for (const double at : {0.0, 12.5, 64.0, 100.0})
        EXPECT_DOUBLE_EQ(x(audioClockSeconds(at, 100, 60), 100, 60), at);
    EXPECT_EQ(x(61, 100, 60), 100);

    for (const double bad : {nan, infinite, -infinite}) {
        EXPECT_EQ(progress(bad, 2, 20), 0);
        EXPECT_EQ(progress(12, bad, 20), 0);
        EXPECT_EQ(audioClockSeconds(bad, 100, 60), 0);
        EXPECT_EQ(x(bad, 100, 60), 0);
    }
    for (const double noLength : {0.0, -1.0, nan, infinite}) {
        EXPECT_EQ(progress(12, 2, noLength), 0);
        EXPECT_EQ(audioClockSeconds(50, noLength, 60), 0);
        EXPECT_EQ(audioClockSeconds(50, 100, noLength), 0);
        EXPECT_EQ(x(30, noLength, 60), 0);
        EXPECT_EQ(x(30, 100, noLength), 0);
    }
}

} // namespace
} // namespace orvane
