#include "OrvaneSyncCore/Utilities/FilenameUtils.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"

#include <gtest/gtest.h>

#include <limits>

namespace orvane {
namespace {

using enum TimecodeFrameRate;

TEST(TimecodeUtils, frameRate) {
    const std::pair<double, TimecodeFrameRate> cases[] = {{24, fps24},
                                                          {24.005, fps24},
                                                          {23.98, fps23_976},
                                                          {23.976, fps23_976},
                                                          {24.4, fps23_976},
                                                          {24.98, fps25},
                                                          {25, fps25},
                                                          {29.97, fps29_97d},
                                                          {30, fps30},
                                                          {30.009, fps30},
                                                          {47.952, fps48},
                                                          {50, fps50},
                                                          {59.94, fps59_94d},
                                                          {60, fps60},
                                                          {90, fps24},
                                                          {100, fps24},
                                                          {120, fps24},
                                                          {0, fps24},
                                                          {-25, fps24},
                                                          {24.5, fps25},
                                                          {std::numeric_limits<double>::quiet_NaN(), fps24},
                                                          {std::numeric_limits<double>::infinity(), fps24}};
    for (const auto& [fps, rate] : cases) EXPECT_EQ(TimecodeUtils::frameRate(fps), rate) << fps;
}

TEST(TimecodeUtils, ratesOfRecorders) {
    using Rate = std::optional<TimecodeFrameRate>;
    const std::pair<const char*, Rate> cases[] = {{"25", fps25},
                                                  {" 25/1\r\n", fps25},
                                                  {"30000/1001", fps29_97d},
                                                  {"30000/1001 NDF", fps29_97},
                                                  {"30000/1001-NDF", {}},
                                                  {"29.97", fps29_97d},
                                                  {"29.97DF", fps29_97d},
                                                  {"29.97ndf", fps29_97},
                                                  {"23.976 fps", fps23_976},
                                                  {"24000/1001", fps23_976},
                                                  {"24000/1001 DF", fps23_976},
                                                  {"30 DF", fps30d},
                                                  {"25 DF", fps25},
                                                  {"2997/100", fps29_97d},
                                                  {"2997/100 NDF", fps29_97},
                                                  {"120/1 DF", fps120d},
                                                  {"120000 / 1001", fps119_88},
                                                  {"+25/+1", fps25},
                                                  {"30000//1001", fps29_97d},
                                                  {"60 NDF", fps60},
                                                  {"59.94 FPS NDF", fps59_94},
                                                  {"", {}},
                                                  {" ", {}},
                                                  {"DF", {}},
                                                  {"fast", {}},
                                                  {"0", {}},
                                                  {"-25", {}},
                                                  {"25/0", {}},
                                                  {"25", fps25},
                                                  {"25/1/1", {}},
                                                  {"25/", {}},
                                                  {"/", {}},
                                                  {"x/1", {}},
                                                  {"99999999999999999999/1", {}},
                                                  {"25 25", {}},
                                                  {"30 NDF DF", {}}};
    for (const auto& [text, rate] : cases)
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

TEST(FilenameUtils, atmoAndMOS) {
    const std::pair<const char*, bool> atmo[] = {{"SC12_AMB_03.wav", true},
                                                 {"room-tone.wav", true},
                                                 {"Wild.Track 2.wav", true},
                                                 {"room tone.wav", true},
                                                 {"ROOMTONE", true},
                                                 {"x ambience.wav", true},
                                                 {"wildtrack.wav", true},
                                                 {"atmo.wav", true},
                                                 {"ROOM__TONE", true},
                                                 {"AMBER_01.WAV", false},
                                                 {"ROOM.wav", false},
                                                 {"tone_room.wav", false},
                                                 {"room_x_tone.wav", false},
                                                 {"take.amb", false},
                                                 {"", false},
                                                 {".amb", true}};
    for (const auto& [name, is] : atmo) EXPECT_EQ(FilenameUtils::isAtmo(name), is) << name;
    const std::pair<const char*, bool> mos[] = {{"clip_mos_01.mov", true},
                                                {"MOS", true},
                                                {"clipmos01.mov", false},
                                                {"clip.mos", false},
                                                {"a.mos.mov", true}};
    for (const auto& [name, is] : mos) EXPECT_EQ(FilenameUtils::isMOS(name), is) << name;
}

TEST(FilenameUtils, withoutExtension) {
    const std::pair<const char*, const char*> cases[] = {
        {"a.b.mov", "a.b"}, {"a", "a"}, {".hidden", ".hidden"}, {"a.", "a."}, {"", ""}};
    for (const auto& [name, stem] : cases) EXPECT_EQ(FilenameUtils::withoutExtension(name), stem) << name;
}

} // namespace
} // namespace orvane
