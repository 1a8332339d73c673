#include "Support/RandomSeed.h"
#include "Support/Test.h"
#include "Timecode/ExactRate.h"
#include "Timecode/Timecode.h"

namespace orvane {
namespace {

using enum TimecodeFrameRate;
using Components = Timecode::Components;
constexpr auto lowest = std::numeric_limits<std::int64_t>::min();
constexpr auto highest = std::numeric_limits<std::int64_t>::max();

TEST(Fraction, comparesByValue) {
    EXPECT_EQ(Fraction(2400, 100), Fraction(24, 1));
    EXPECT_EQ(Fraction(-1, 2), Fraction(2, -4));
    EXPECT_FALSE(Fraction(30000, 1001) == Fraction(2997, 100));
    EXPECT_FALSE(Fraction(1, 0) == Fraction(0, 1));
    EXPECT_FALSE(Fraction(lowest, -1) == Fraction(lowest, 1)) << "without leaving 64 bits";
}

TEST(ExactRate, theTableWithinHalfAPermilleElseTheNumberItself) {
    const struct {
        double fps;
        Fraction rate;
    } cases[] = {
        {23.976, {24000, 1001}}, {23.98, {24000, 1001}},
        {24, {24, 1}},           {23.99, {24, 1}}, // between the two, nearer to 24
        {24.02, {1201, 50}},     {29.97003, {30000, 1001}},
        {29.97F, {30000, 1001}}, {59.95, {60000, 1001}},
        {47.95, {48000, 1001}},  {119.88, {120000, 1001}},
        {12.5, {25, 2}},         {24.5, {49, 2}},
        {29.7, {297, 10}},       {14.985, {2997, 200}},
        {240, {240, 1}},         {0.04, {1, 25}},
        {1e-12, {24, 1}},        {1e12, {24, 1}},
        {-25, {24, 1}},          {0, {24, 1}},
        {std::nan(""), {24, 1}}, {HUGE_VAL, {24, 1}},
    };
    for (const auto& [fps, rate] : cases) {
        EXPECT_EQ(exactRate(fps), rate) << fps;
        EXPECT_EQ(exactRate(exactRate(fps).doubleValue()), rate) << fps << " twice";
    }
    // A variable rate has no short fraction; the one that is used drifts by less than a frame in a day.
    EXPECT_NEAR(exactRate(27.182818284590452).doubleValue(), 27.182818284590452, 1e-12);
    EXPECT_EQ(exactRateValue(59.95), 60000.0 / 1001);
    EXPECT_EQ(exactRateValue(-1e300), -1e300);
}

TEST(ExactRate, cutsToFramesAfterTheNudge) {
    const std::pair<double, std::optional<std::int64_t>> cases[] = {
        {23.99998, 23},
        {864049.9999999999, 864050},
        {-1.999995, -2},
        {-1.99998, -1},
        {-0.5, 0},
        {0, 0},
        {1e16, std::nullopt},
        {std::nan(""), std::nullopt},
    };
    for (const auto& [frames, whole] : cases) EXPECT_EQ(truncatedFrames(frames), whole) << frames;
}

TEST(TimecodeFrameRate, table) {
    for (const TimecodeFrameRate rate : timecodeRate::all()) {
        const auto name = timecodeRate::name(rate);
        SCOPED_TRACE(name);
        EXPECT_EQ(timecodeRate::fromName(name), rate);
        EXPECT_EQ(timecodeRate::from(timecodeRate::rate(rate), timecodeRate::isDrop(rate)), rate);
        EXPECT_EQ(timecodeRate::maxFrames(rate),
                  std::ceil(timecodeRate::frameRateForRealTimeCalculation(rate)));
        EXPECT_EQ(timecodeRate::frameDigits(rate), timecodeRate::maxFrames(rate) > 100 ? 3 : 2);
        EXPECT_EQ(timecodeRate::isDrop(rate), name.ends_with('d'));
        // In ten minutes, the nominal count minus the frames dropped in nine of the minutes is the real
        // count.
        EXPECT_EQ(timecodeRate::maxFrames(rate) * 600 - timecodeRate::framesDroppedPerMinute(rate) * 9,
                  timecodeRate::hundredthsForElapsedFrames(rate) * 6);
    }
    EXPECT_EQ(timecodeRate::from({60000, 2002}, true), fps29_97d) << "in any terms";
    EXPECT_EQ(timecodeRate::from({25, 1}, true), std::nullopt);
    EXPECT_EQ(timecodeRate::fromName("fps23"), std::nullopt);
}

TEST(Timecode, countsFrames) {
    const auto check = [&](std::int64_t frames, TimecodeFrameRate rate, const char* text) {
        EXPECT_EQ(Timecode::fromFrameCount(frames, rate).stringValue(), text) << frames;
    };
    check(0, fps25, "00:00:00:00");
    check(1799, fps29_97d, "00:00:59;29");
    check(1800, fps29_97d, "00:01:00;02");
    check(17981, fps29_97d, "00:09:59;29");
    check(17982, fps29_97d, "00:10:00;00");
    check(19781, fps29_97d, "00:10:59;29");
    check(19782, fps29_97d, "00:11:00;02");
    check(3600, fps59_94d, "00:01:00;04");
    check(7199, fps119_88d, "00:00:59;119");
    check(7200, fps119_88d, "00:01:00;008");
    check(2589408, fps30d, "1 00:00:00;00");
    check(1800, fps29_97, "00:01:00:00");
    check(119, fps120, "00:00:00:119");
    check(99, fps100, "00:00:00:99");
    check(-25, fps25, "00:00:-1:00");
    check(-1, fps25, "00:00:00:-1");
    check(-25 * 86400 - 1, fps25, "-1 00:00:00:01");
    check(25 * 90000, fps25, "1 01:00:00:00");
    for (const auto rate : timecodeRate::all())
        for (const auto frames : {lowest, highest})
            EXPECT_FALSE(Timecode::fromFrameCount(frames, rate).stringValue().empty());
}

TEST(Timecode, countsSeconds) {
    const auto check = [&](double seconds, TimecodeFrameRate rate, const Components& components) {
        EXPECT_EQ(Timecode::fromRealTime(seconds, rate).components(), components) << seconds;
    };
    check(3600, fps25, {.hours = 1});
    check(3600, fps29_97d, {.hours = 1, .subFrames = 10});
    check(86400, fps24, {.days = 1});
    check(1001.0 / 24000, fps23_976, {.frames = 1});
    check(0.5, fps25, {.frames = 12, .subFrames = 50});
    check(-1, fps25, {.seconds = -1});
    check(-0.02, fps25, {.subFrames = -50});
    check(-0.0, fps25, {});
    check(0.29 / 25, fps25, {.subFrames = 29});
    check(1e300, fps25, {});
    check(-1e300, fps29_97d, {});
    check(std::numeric_limits<double>::quiet_NaN(), fps25, {});
    check(std::numeric_limits<double>::infinity(), fps25, {});
}

TEST(Timecode, readsTexts) {
    const auto check = [&](const char* text, const std::optional<Components>& components) {
        const auto read = Timecode::fromString(text, fps25);
        ASSERT_EQ(read.has_value(), components.has_value()) << text;
        EXPECT_EQ(read.value_or(Timecode({}, fps25)).components(), components.value_or(Components{})) << text;
    };
    check("01:02:03:04", Components{0, 1, 2, 3, 4, 0});
    check("01;02;03;04", Components{0, 1, 2, 3, 4, 0});
    check("1:2:3:004", Components{0, 1, 2, 3, 4, 0});
    check("01:02:03:04.05", Components{0, 1, 2, 3, 4, 5});
    check("01:02:03:04.", Components{0, 1, 2, 3, 4, 0});
    check("9 01:02:03:04", Components{9, 1, 2, 3, 4, 0});
    check("9:01:02:03:04", Components{9, 1, 2, 3, 4, 0});
    check("9;01:02:03:04.05", Components{9, 1, 2, 3, 4, 5});
    check(":01:02:03:04", Components{0, 1, 2, 3, 4, 0});
    check("\t01:02:03:04", Components{0, 1, 2, 3, 4, 0});
    check("99:99:99:99", Components{0, 99, 99, 99, 99, 0});
    check("1 99999999999999999999:02:03:04", Components{1, 0, 2, 3, 4, 0}); // four groups are read
    check("99999999999999999999:02:03:04", {});
    check("", {});
    check("01:00:00", {});
    check("01:02:03.04", {});
    check("1  01:02:03:04", {});
    check("01:02:03:04 ", {});
    check("-01:02:03:04", {});
    check("01:02:03:04:05:06", {});
    check("01:02:03:04.5.6", {});
    check("01:02::04", {});
    check("aa:bb:cc:dd", {});
}

TEST(Timecode, givesRealTime) {
    struct Case {
        const char* text;
        TimecodeFrameRate rate;
        double seconds;
    };
    for (const Case& test : {
             Case{"1 00:00:00:00", fps25, 86400}, Case{"01:00:00;00", fps29_97d, 3599.9964},
             Case{"01:00:00:00", fps29_97, 3603.6}, Case{"00:10:00:00", fps59_94d, 599.9994},
             Case{"00:00:00:99", fps25, 3.96}, Case{"00:00:00:12.50", fps25, 0.5},
             Case{"9223372036854775807:00:00:00", fps25, 0}, // a count that does not fit into 64 bits
         })
        EXPECT_NEAR(Timecode::fromString(test.text, test.rate)->realTimeValue(), test.seconds, 1e-9)
            << test.text;
    EXPECT_NEAR(Timecode({-1, -1, 0, 0, 0, 0}, fps29_97d).realTimeValue(), -89999.91, 1e-9);
}

TEST(Timecode, everyFrameIsReadBack) {
    const auto seed = test::randomSeed();
    std::mt19937_64 random(seed);
    for (const auto rate : timecodeRate::all())
        for (int i = 0; i < 400; ++i) {
            const auto frames = static_cast<std::int64_t>(random() % 20'000'000);
            const Timecode made = Timecode::fromFrameCount(frames, rate);
            const auto read = Timecode::fromString(made.stringValue(), rate);
            ASSERT_TRUE(read) << made.stringValue();
            ASSERT_EQ(*read, made);
            ASSERT_EQ(Timecode::fromRealTime(read->realTimeValue(), rate).components(), made.components())
                << "seed " << seed << ", frame " << frames << " at " << timecodeRate::name(rate);
            ASSERT_LT(Timecode::fromFrameCount(frames - 1, rate).realTimeValue(), made.realTimeValue());
        }
}

} // namespace
} // namespace orvane
