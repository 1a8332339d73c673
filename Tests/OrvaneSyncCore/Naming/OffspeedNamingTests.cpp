#include "OrvaneSyncCore/Services/Naming/OffspeedNaming.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

TEST(OffspeedNaming, SuffixesSayTheRateAndJoinTheName) {
    const auto check = [&](const char* suffix, double fps, const char* name) {
        EXPECT_EQ(OffspeedNaming::resolveNativeMOSName("Clip", suffix, fps), name);
        EXPECT_EQ(OffspeedNaming::resolveProjectRateName("Clip", suffix, fps), name);
    };
    check("[{fps} FPS]", 120, "Clip [120 FPS]");
    check("_{fps}fps", 47.952, "Clip_48fps");
    check("-{fps}", 119.88, "Clip-120");
    check(" at {fps}/{fps}", 25, "Clip at 25/25");
    check(".{fps}", 59.94, "Clip.59.9");
    check("{fps}", 1200, "Clip 1200");
    check("{FPS}", 120, "Clip {FPS}");
    check("", 120, "Clip");
}

} // namespace
} // namespace orvane
