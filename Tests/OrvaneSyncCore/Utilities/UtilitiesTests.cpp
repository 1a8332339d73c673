#include "OrvaneSyncCore/Utilities/ClusterTimelineAxis.h"
#include "OrvaneSyncCore/Utilities/FilenameUtils.h"
#include "OrvaneSyncCore/Utilities/LaneLayout.h"
#include "OrvaneSyncCore/Utilities/PathGlob.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"
#include "Support/Test.h"

namespace orvane {
namespace {

using enum TimecodeFrameRate;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();

TEST(TimecodeUtils, frameRate) {
    const std::map<TimecodeFrameRate, std::vector<double>> cases{
        {fps23_976, {23.98, 23.976, 24.4}},
        {fps24, {24, 24.005, 90, 100, 120, 0, -25, nan, infinite}},
        {fps25, {24.98, 25, 24.5}},
        {fps29_97d, {29.97}},
        {fps30, {30, 30.009}},
        {fps48, {47.952}},
        {fps50, {50}},
        {fps59_94d, {59.94}},
        {fps60, {60}}};
    for (const auto& [rate, numbers] : cases)
        for (const double fps : numbers) EXPECT_EQ(TimecodeUtils::frameRate(fps), rate) << fps;
}

TEST(TimecodeUtils, ratesOfRecorders) {
    const std::map<std::optional<TimecodeFrameRate>, std::vector<const char*>> cases{
        {fps23_976, {"23.976 fps", "24000/1001", "24000/1001 DF"}},
        {fps25, {"25", " 25/1\r\n", "25 DF", "+25/+1"}},
        {fps29_97, {"30000/1001 NDF", "29.97ndf", "2997/100 NDF"}},
        {fps29_97d, {"30000/1001", "29.97", "29.97DF", "2997/100", "30000//1001"}},
        {fps30d, {"30 DF"}},
        {fps59_94, {"59.94 FPS NDF"}},
        {fps60, {"60 NDF"}},
        {fps119_88, {"120000 / 1001"}},
        {fps120, {"120"}},
        {fps120d, {"120/1 DF"}},
        {std::nullopt,
         {"30000/1001-NDF", "", " ", "DF", "fast", "0", "-25", "25/0", "25/1/1", "25/", "/", "x/1",
          "99999999999999999999/1", "25 25", "30 NDF DF", "24.4", "1000", "17/1"}}};
    for (const auto& [rate, texts] : cases)
        for (const char* text : texts)
            EXPECT_EQ(TimecodeUtils::timecodeFrameRateFromIXML(text), rate) << text;
    EXPECT_EQ(TimecodeUtils::timecodeFrameRateFromIXML(std::nullopt), std::nullopt);
}

TEST(TimecodeUtils, conversions) {
    EXPECT_EQ(TimecodeUtils::secondsToTC(3600.0, fps25), "01:00:00:00");
    EXPECT_EQ(TimecodeUtils::secondsToTC(3600.0, 29.97), "01:00:00;00");
    EXPECT_EQ(TimecodeUtils::framesToTC(1800, fps29_97d), "00:01:00;02");
    EXPECT_EQ(TimecodeUtils::bextToTC(172800000, 48000, fps25), "01:00:00:00");
    EXPECT_EQ(TimecodeUtils::bextToTC(172800000, 96000, 23.976), "00:29:58:04");
    EXPECT_EQ(TimecodeUtils::bextToSeconds(24000, 48000), 0.5);
    EXPECT_EQ(TimecodeUtils::tcToSeconds("01:00:00:00", 25), 3600.0);
    EXPECT_EQ(TimecodeUtils::tcToSeconds("01;00;00;00", 25), 3600.0);
    EXPECT_NEAR(TimecodeUtils::tcToSeconds("01:00:00;00", 29.97), 3599.9964, 1e-9);
    EXPECT_EQ(TimecodeUtils::tcToSeconds("01:00:00", 25), 0.0);
}

TEST(TimecodeUtils, whyNoTimecode) {
    struct Case {
        const char* text;
        TimecodeFrameRate rate;
        const char* why;
    };
    for (const Case& one : {Case{"00:10:00;00", fps29_97d, ""},
                            {"00:11:00;02", fps29_97d, ""},
                            {"00:11:00;01", fps29_97d, "no such frame"},
                            {"00:11:00:01", fps25, ""},
                            {"00:00:00:25", fps25, "frames go to 24"},
                            {"00:60:00:00", fps25, "go to 59"},
                            {"ten", fps25, "no timecode"}}) {
        const std::string why = TimecodeUtils::whyNoTimecode(one.text, one.rate);
        EXPECT_EQ(why.empty(), std::string(one.why).empty()) << one.text << ": " << why;
        EXPECT_TRUE(why.find(one.why) != std::string::npos) << one.text << ": " << why;
    }
}

TEST(FilenameUtils, atmoAndMOS) {
    for (const char* name : {"SC12_AMB_03.wav", "room-tone.wav", "Wild.Track 2.wav", "room tone.wav",
                             "ROOMTONE", "x ambience.wav", "wildtrack.wav", "atmo.wav", "ROOM__TONE", ".amb"})
        EXPECT_TRUE(FilenameUtils::isAtmo(name)) << name;
    for (const char* name : {"AMBER_01.WAV", "ROOM.wav", "tone_room.wav", "room_x_tone.wav", "take.amb", ""})
        EXPECT_FALSE(FilenameUtils::isAtmo(name)) << name;
    for (const char* name : {"clip_mos_01.mov", "MOS", "a.mos.mov"})
        EXPECT_TRUE(FilenameUtils::isMOS(name)) << name;
    for (const char* name : {"clipmos01.mov", "clip.mos"}) EXPECT_FALSE(FilenameUtils::isMOS(name)) << name;
}

TEST(FilenameUtils, withoutExtension) {
    const std::pair<const char*, const char*> cases[] = {
        {"a.b.mov", "a.b"}, {"a", "a"}, {".hidden", ".hidden"}, {"a.", "a."}, {"", ""}};
    for (const auto& [name, stem] : cases) EXPECT_EQ(FilenameUtils::withoutExtension(name), stem) << name;
}

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

TEST(PathGlob, matchesAsShellsDo) {
    const struct {
        const char *pattern, *path;
        bool matches;
    } cases[] = {
        {"*_proxy.mov", "A/A001_proxy.mov", true},
        {"Proxy", "A/Proxy/a.mov", true},
        {"Proxy", "A/MyProxy/a.mov", false},
        {"proxy", "Proxy/a.mov", false},
        {"Proxy/", "A/Proxy", true},
        {"A/*.mov", "A/a.mov", true},
        {"A/*.mov", "A/B/a.mov", false},
        {"A/*.mov", "x/A/a.mov", false},
        {"/a.mov", "A/a.mov", false},
        {"./A/**/a.mov", "A/a.mov", true},
        {"A/**/a.mov", "A/B/C/a.mov", true},
        {"**/DCIM/**", "x/y/DCIM", true},
        {"**/b/*", "a/b", false},
        {"T??.wav", "T01.wav", true},
        {"T?.wav", "T\u00e9.wav", true},
        {"T?.wav", "T.wav", false},
        {"[A-C]0*", "B001.mov", true},
        {"[!A-C]0*", "B001.mov", false},
        {"[]x]a", "]a", true},
        {"[a", "[a", true},
        {"xa]", "xa]", true},
        {"*a*b*c", "xaxxbxbxc", true},
        {"*a*b*c", "xaxxcxb", false},
        {"", "a.mov", false},
        {"**", "a/b", true},
    };
    for (const auto& row : cases)
        EXPECT_EQ(PathGlob(row.pattern).matches(row.path), row.matches) << row.pattern << " on " << row.path;
    for (const char* pattern : {"A/B", "A/*", "**/B", "B", "A/B/c.mov"}) // the file itself, or a folder above
        EXPECT_TRUE(PathGlob(pattern).matchesOrHolds("A/B/c.mov")) << pattern;
    for (const char* pattern : {"B/c.mov", "A/B/c", "C"})
        EXPECT_FALSE(PathGlob(pattern).matchesOrHolds("A/B/c.mov")) << pattern;
    // A pattern that would take time without end by trying all ways.
    EXPECT_FALSE(PathGlob("**/a*a*a*a*a*b/**/x/**/y").matches(std::string(2000, 'a') + "/x/x/x/x/x"));
}

} // namespace
} // namespace orvane
