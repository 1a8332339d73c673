#include "OrvaneSyncCore/Services/Naming/OffspeedNaming.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

TEST(OffspeedNaming, SuffixesSayTheRateAndJoinTheName) {
    const struct {
        const char* suffix;
        double fps;
        const char* name;
    } cases[] = {
        {"[{fps} FPS]", 120, "Clip [120 FPS]"}, {"_{fps}fps", 47.952, "Clip_48fps"},
        {"-{fps}", 119.88, "Clip-120"},         {" at {fps}/{fps}", 25, "Clip at 25/25"},
        {".{fps}", 59.94, "Clip.59.9"},         {"{fps}", 1200, "Clip 1200"},
        {"{FPS}", 120, "Clip {FPS}"},           {"", 120, "Clip"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(OffspeedNaming::resolveNativeMOSName("Clip", c.suffix, c.fps), c.name);
        EXPECT_EQ(OffspeedNaming::resolveProjectRateName("Clip", c.suffix, c.fps), c.name);
    }
}

} // namespace
} // namespace orvane
