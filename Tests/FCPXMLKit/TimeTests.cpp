#include "FCPXMLKit/model/Time.h"
#include "Support/Test.h"

namespace orvane::fcpxml {
namespace {

TEST(TimeText, PrintsLowestTermsAndReadsThemBack) {
    const auto check = [&](const char* name, const Time& time, const char* text) {
        EXPECT_EQ(time.description(), text) << name;
        EXPECT_EQ(Time::fromString(text), time) << name;
    };
    check("zero has no denominator", {0, 25}, "0s");
    check("whole seconds have none either", {125, 25}, "5s");
    check("a frame of film at video rate", {2002, 60000}, "1001/30000s");
    check("the sign stands in front", {1, -25}, "-1/25s");
    check("the largest of 64 bits", {INT64_MAX, 2}, "9223372036854775807/2s");
    check("the smallest of 64 bits", {INT64_MIN, 3}, "-9223372036854775808/3s");
    const Time day = Time::hour() * 24;
    EXPECT_EQ((day * INT64_MAX).description(), "796899343984252629724800s") << "beyond 64 bits, exact";
}

TEST(TimeText, ReadsTheFirstTimeInATextOrNothing) {
    const auto check = [&](const char* text, const std::optional<Time>& time) {
        EXPECT_EQ(Time::fromString(text), time) << '"' << text << '"';
    };
    check("30s", Time(30, 1));
    check("30/1s", Time(30, 1));
    check("+7/2s", Time(7, 2));
    check("about 12/24s or so", Time(1, 2));
    check("5/s 3s", Time(3, 1));
    check("1/2/3s", Time(2, 3));
    check("", std::nullopt);
    check("s", std::nullopt);
    check("5", std::nullopt);
    check("5/0s", std::nullopt);
    check("1.5", std::nullopt);
    check("9223372036854775808s", std::nullopt);
    check("1/9223372036854775808s", std::nullopt);
}

TEST(TimeArithmetic, IsExact) {
    const Time frame = Time::frameAt29_97fps();
    Time sum;
    for (int i = 0; i < 30000; ++i) sum += frame;
    EXPECT_EQ(sum, Time(1001, 1));
    EXPECT_EQ(frame * 30000, 30000 * frame);
    EXPECT_EQ(sum / frame, BFraction(30000, 1));
    EXPECT_EQ(Time(1, 3) - Time(1, 2), Time(-1, 6));
    EXPECT_EQ((-Time(1, 3)).magnitude(), Time(1, 3));
    EXPECT_EQ(Time(-2, 3).reciprocal(), Time(-3, 2));
    Time scaled(3, 4);
    scaled *= BFraction(2, 3);
    EXPECT_EQ(scaled, Time(1, 2));
    scaled /= BFraction(1, 2);
    EXPECT_EQ(scaled, Time::second());
    EXPECT_LT(Time(1001, 30000), Time(1, 29));
    EXPECT_GT(Time(1001, 30000), Time::frameAt30fps());
    EXPECT_EQ(std::hash<Time>{}(Time(2, 4)), std::hash<Time>{}(Time(1, 2)));
    EXPECT_DOUBLE_EQ(Time::sampleAt44_1kHz().toDouble() * 44100, 1.0);
}

TEST(TimeFrames, RoundTowardsZeroOrToTheNearest) {
    const Time frame = Time::frameAt25fps();
    const auto check = [&](const char* name, const Time& time, const Time& down, const Time& nearest) {
        EXPECT_EQ(time.toFrame(frame), down) << name;
        EXPECT_EQ(time.toFrame(frame, FrameSampling::nearestNeighbor), nearest) << name;
        EXPECT_EQ(time.toFrame(frame, FrameSampling::opticalFlow), down) << name;
    };
    check("on a frame", {3, 25}, {3, 25}, {3, 25});
    check("just below half", {349, 2500}, {3, 25}, {3, 25});
    check("half goes away from zero", {7, 50}, {3, 25}, {4, 25});
    check("negative half too", {-7, 50}, {-3, 25}, {-4, 25});
    check("less than a negative frame", {-1, 100}, {0, 1}, {0, 1});
    check("half a frame from nothing", {-1, 50}, {0, 1}, {-1, 25});
}

} // namespace
} // namespace orvane::fcpxml
