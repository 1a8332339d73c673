#include "FCPXMLKit/model/Values.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace orvane::fcpxml {
namespace {

TEST(AttributeText, NumbersHaveTenDecimalsAtMostAndNoTrailingZeros) {
    const struct {
        double value;
        const char* text;
    } cases[] = {
        {1920.0, "1920"},
        {0.5, "0.5"},
        {0.3, "0.3"},
        {-0.0, "0"},
        {1e21, "1000000000000000000000"},
        {1.0 / 3, "0.3333333333"},
        {2.0 / 3, "0.6666666667"},
        {0.00048828125, "0.0004882813"}, // a tie that binary holds exactly
        {-0.00048828125, "-0.0004882813"},
        {9.99999999995, "10"},
        {0.99999999999, "1"},
        {-99.99999999999, "-100"},
        {1e-11, "0"},
        {-1e-11, "0"},
        {std::numeric_limits<double>::quiet_NaN(), "0"},
        {std::numeric_limits<double>::infinity(), "0"},
    };
    for (const auto& c : cases) EXPECT_EQ(attributeText(c.value), c.text) << c.value;
}

TEST(AttributeText, Decibels) {
    EXPECT_EQ(attributeText(Decibels{-3.21}), "-3.21dB");
    EXPECT_EQ(attributeText(Decibels{12}), "12dB");
    EXPECT_EQ(attributeText(Decibels{0}), "0dB");
    EXPECT_EQ(attributeText(Decibels{0.00001}), "1e-05dB") << "too small for the number formatter";
    EXPECT_EQ(Decibels::fromString("-3.21dB"), Decibels{-3.21});
    EXPECT_EQ(Decibels::fromString("+6dB"), Decibels{6});
    EXPECT_EQ(Decibels::fromString("1e-05dB"), Decibels{0.00001});
    for (const char* text : {"", "dB", "6", "6 dB", ".5dB", "5.dB", "1e5dB", "--6dB", "xdB"})
        EXPECT_EQ(Decibels::fromString(text), std::nullopt) << text;
}

TEST(AttributeText, DatesKeepTheirZone) {
    using namespace std::chrono;
    const sys_seconds instant = sys_days{2024y / May / 17} + 8h;
    EXPECT_EQ(attributeText(DateTime{instant, minutes{120}}), "2024-05-17 10:00:00 +0200");
    EXPECT_EQ(attributeText(DateTime{instant, minutes{-570}}), "2024-05-16 22:30:00 -0930");
    EXPECT_EQ(attributeText(DateTime{instant, std::nullopt}), "2024-05-17 08:00:00 +0000");
    EXPECT_EQ(DateTime::fromString("2024-05-17 10:00:00 +0200"), (DateTime{instant, minutes{120}}));
    EXPECT_EQ(DateTime::fromString("2024-05-17 10:00:00 0200"), (DateTime{instant, minutes{120}}));
    for (const char* text : {"", "2024-05-17", "2024-02-30 10:00:00 +0000", "2024-05-17 25:00:00 +0000",
                             "2024-05-17 10:00:00 +02", "2024-05-17 10:00:00 +0200 "})
        EXPECT_EQ(DateTime::fromString(text), std::nullopt) << text;
}

TEST(AttributeText, ColorSpaceAndSamplings) {
    EXPECT_EQ(attributeText(VideoColorSpace::rec709()), "1-1-1 (Rec. 709)");
    EXPECT_EQ(attributeText(VideoColorSpace{"9-16-9", ""}), "9-16-9");
    EXPECT_EQ(attributeText(FrameSampling::nearestNeighbor), "nearest-neighbor");
    EXPECT_EQ(attributeText(FrameSampling::opticalFlowFrc), "optical-flow-frc");
    EXPECT_EQ(attributeText(TcFormat::df), "DF");
    EXPECT_EQ(attributeText(SrcEnable::none), "none");
}

TEST(Roles, SplitAtOnePointAndDescribeThemselves) {
    const struct {
        const char* id;
        const char* name;
        std::optional<std::string> subrole;
        const char* description;
    } cases[] = {
        {"dialogue", "dialogue", std::nullopt, "Dialogue"},
        {"dialogue.Boom", "dialogue", "Boom", "Dialogue (Boom)"},
        {"dialogue.dialogue-1", "dialogue", "dialogue-1", "Dialogue"},
        {"dialogue.dialogue-2", "dialogue", "dialogue-2", "Dialogue (Dialogue-2)"},
        {"effects-12.Wind", "effects-12", "Wind", "Effects-12 (Wind)"},
        {"effects-.Wind", "effects-", "Wind", "effects- (Wind)"},
        {"Anna.Lav. 1", "Anna", std::nullopt, "Anna"},
        {"musical.x", "musical", "x", "musical (x)"},
    };
    for (const auto& c : cases) {
        const AudioRole role{{c.id}};
        EXPECT_EQ(role.name(), c.name) << c.id;
        EXPECT_EQ(role.subrole(), c.subrole) << c.id;
        EXPECT_EQ(role.description(), c.description) << c.id;
    }
    EXPECT_EQ(VideoRole{{"titles-2.titles-2-1"}}.description(), "Titles-2 (titles-2-1)");
    EXPECT_EQ(VideoRole{{"dialogue"}}.description(), "dialogue") << "no role of pictures";
}

TEST(Versions, CompareByAgeAndNotByText) {
    using enum FCPXMLVersion;
    EXPECT_LT(v1_9, v1_10);
    EXPECT_EQ(attributeText(v1_10), "1.10");
    EXPECT_EQ(fcpxmlVersionFrom("1.14"), v1_14);
    EXPECT_EQ(fcpxmlVersionFrom("1.5"), std::nullopt);

    const auto since = FCPXMLVersionRange::from(v1_11);
    EXPECT_FALSE(since.contains(v1_10));
    EXPECT_TRUE(since.contains(v1_14));
    EXPECT_TRUE(FCPXMLVersionRange::upTo(v1_8).contains(v1_6));
    EXPECT_FALSE(FCPXMLVersionRange::upTo(v1_8).contains(v1_9));
    EXPECT_TRUE(FCPXMLVersionRange::only(v1_9).contains(v1_9));
    EXPECT_TRUE(FCPXMLVersionRange::allVersions().contains(v1_6));
    EXPECT_EQ(since.intersection(FCPXMLVersionRange::upTo(v1_12)), FCPXMLVersionRange::between(v1_11, v1_12));
    EXPECT_EQ(since.intersection(FCPXMLVersionRange::upTo(v1_10)), std::nullopt);
}

} // namespace
} // namespace orvane::fcpxml
