#include "OrvaneSyncCLI/RunCommand.h"
#include "Support/NumberedClip.h"
#include "Support/TemporaryDirectory.h"

#include <gtest/gtest.h>

namespace orvane::cli {
namespace {

TEST(FrameCommand, writesThePictureOfTheMomentAndReplacesNothingElse) {
    const test::TemporaryDirectory folder;
    const std::string clip = folder.path("clip.mov"), picture = folder.path("picture.png");
    if (!test::NumberedClip{50, "24000/1001", "-c:v prores_ks"}.make(clip)) GTEST_SKIP() << "no encoder";
    const auto frame = [&](const std::string& at, const std::string& to) {
        return runWith({"frame", clip, "--at", at, "-o", to, "--json"});
    };
    // 1.001 s is exactly the start of picture 24, although binary fractions may give another result.
    const auto answer = frame("1.001", picture);
    ASSERT_EQ(answer.status, 0) << answer.err;
    EXPECT_EQ(answer.json().find("number")->number(), 24);
    EXPECT_EQ(answer.json().find("width")->number(), 256);
    EXPECT_EQ(folder.read("picture.png").substr(1, 3), "PNG");
    EXPECT_EQ(frame("500", picture).json().find("number")->number(), 49) << "its own picture is replaced";
    EXPECT_EQ(frame("1", clip).status, 1);
    EXPECT_EQ(frame("-1", picture).status, 2);
    EXPECT_EQ(frame("1", "-").status, 2);
    EXPECT_EQ(frame("1", folder.write("other.png", "mine")).status, 1);
    const auto none = runWith({"frame", folder.write("text.mov", "no video"), "--at", "0", "-o", picture});
    EXPECT_EQ(none.status, 1);
    EXPECT_NE(none.err.find("no picture that can be decoded"), std::string::npos) << none.err;
}

} // namespace
} // namespace orvane::cli
