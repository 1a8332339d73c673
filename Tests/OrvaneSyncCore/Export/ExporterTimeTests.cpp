#include "OrvaneSyncCore/Export/ExportFixtures.h"
#include "OrvaneSyncCore/Services/Export/ExportTimes.h"
#include "Support/Test.h"

namespace orvane {
namespace {

using fcpxml::Time;
using namespace FCPXMLExporter;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(ExporterTime, FrameDurations) {
    const auto check = [&](double fps, const char* text, bool drop) {
        EXPECT_EQ(frameDurationTime(fps).description(), text) << fps;
        EXPECT_EQ(isDropFrame(fps), drop) << fps;
    };
    check(23.976, "1001/24000s", false);
    check(24, "1/24s", false);
    check(25.009, "1/25s", false);
    check(29.97, "1001/30000s", true);
    check(30, "1/30s", false);
    check(47.952, "1001/48000s", false);
    check(59.94, "1001/60000s", true);
    check(60, "1/60s", false);
    check(119.88, "1001/120000s", false);
    check(0, "1/24s", false);
    check(-25, "1/24s", false);
    check(0.4, "1/24s", false);
    check(nan, "1/24s", false);
    check(infinity, "1/24s", false);
    check(1e300, "1/24s", false);
}

TEST(ExporterTime, DurationsAreCutToWholeFrames) {
    const auto check = [&](std::optional<double> seconds, double fps, const std::optional<Time>& time) {
        EXPECT_EQ(durationTime(seconds, fps), time) << seconds.value_or(0) << " at " << fps;
    };
    check(1.001, 23.976, Time(23023, 24000));
    check(20, 25, Time(20, 1));
    check(20.039, 25, Time(20, 1));
    check(0.01, 25, Time(0, 1));
    check(3600, 29.97, Time(107892LL * 1001, 30000));
    check(2, nan, Time(2, 1));
    check(0, 25, std::nullopt);
    check(-3, 25, std::nullopt);
    check(std::nullopt, 25, std::nullopt);
    check(nan, 25, std::nullopt);
    check(infinity, 25, std::nullopt);
    check(1e300, 25, std::nullopt);
}

TEST(ExporterTime, TimecodesMayBeZeroAndOffsetsNegative) {
    EXPECT_EQ(timecodeToTime("00:00:00:00", 25), Time::zero());
    EXPECT_EQ(timecodeToTime("10:00:00:12", 25), Time(36000 * 25 + 12, 25));
    EXPECT_EQ(timecodeToTime("00:01:00;02", 29.97), timecodeToTime("00:01:00:02", 29.97))
        << "the rate decides, not the separator";
    EXPECT_EQ(timecodeToTime("whenever", 25), std::nullopt);
    EXPECT_EQ(timecodeToTime(std::nullopt, 25), std::nullopt);
    EXPECT_EQ(timecodeToTime("999999999999:00:00:00", 25), std::nullopt) << "beyond any frame count";

    EXPECT_EQ(manualOffsetTime(0.00005, 25), Time::zero());
    EXPECT_EQ(manualOffsetTime(-0.08, 25), Time(-2, 25));
    EXPECT_EQ(manualOffsetTime(0.039, 25), Time::zero());
    EXPECT_EQ(manualOffsetTime(1, 29.97), Time(29 * 1001, 30000));
    EXPECT_EQ(manualOffsetTime(nan, 25), Time::zero());
    EXPECT_EQ(manualOffsetTime(infinity, 25), Time::zero());
}

TEST(ExporterTime, SoundStartsOnItsSample) {
    MediaAsset audio = test::recording(2);
    const auto check = [&](const char* name, const std::optional<std::uint64_t>& reference,
                           std::optional<double> sampleRate, const std::optional<std::string>& timecode,
                           std::optional<double> frameRate, const std::optional<Time>& start) {
        audio.bextTimeReference = reference;
        audio.sampleRate = sampleRate;
        audio.startTimecodeString = timecode;
        audio.frameRate = frameRate;
        EXPECT_EQ(audioStartTime(audio), start) << name;
    };
    check("an hour", 172800000, 48000, "09:00:00:00", 25, Time(3600, 1));
    check("rate unknown", 48001, std::nullopt, std::nullopt, std::nullopt, Time(48001, 48000));
    check("rate impossible", 48001, 0.5, std::nullopt, std::nullopt, Time(48001, 48000));
    check("rate with a fraction", 47952, 47952.9, std::nullopt, std::nullopt, Time(1, 1));
    check("no reference", 0, 48000, "01:00:00:12", 25, Time(90012, 25));
    check("timecode at the usual rate", std::nullopt, 48000, "00:00:01:12", std::nullopt, Time(3, 2));
    check("nothing at all", std::nullopt, 48000, std::nullopt, 25, std::nullopt);
    check("a header filled with ones", std::numeric_limits<std::uint64_t>::max(), 48000, "01:00:00:12", 25,
          Time(90012, 25));
}

} // namespace
} // namespace orvane
