#include "FCPXMLKit/model/Values.h"
#include "Support/Test.h"

namespace orvane::fcpxml {
namespace {

TEST(AttributeText, NumbersHaveTenDecimalsAtMostAndNoTrailingZeros) {
    const auto check = [&](double value, const char* text) {
        EXPECT_EQ(attributeText(value), text) << value;
    };
    check(1920.0, "1920");
    check(0.5, "0.5");
    check(0.3, "0.3");
    check(-0.0, "0");
    check(1e21, "1000000000000000000000");
    check(1.0 / 3, "0.3333333333");
    check(2.0 / 3, "0.6666666667");
    check(0.00048828125, "0.0004882813"); // a tie: binary represents this number exactly
    check(-0.00048828125, "-0.0004882813");
    check(9.99999999995, "10");
    check(0.99999999999, "1");
    check(-99.99999999999, "-100");
    check(1e-11, "0");
    check(-1e-11, "0");
    check(std::numeric_limits<double>::quiet_NaN(), "0");
    check(std::numeric_limits<double>::infinity(), "0");
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
    EXPECT_EQ(DateTime::fromString("2024-05-16 22:30:00 -0930"), (DateTime{instant, minutes{-570}}));
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
    const auto check = [&](const char* id, const char* name, const std::optional<std::string>& subrole,
                           const char* description) {
        const AudioRole role{{id}};
        EXPECT_EQ(role.name(), name) << id;
        EXPECT_EQ(role.subrole(), subrole) << id;
        EXPECT_EQ(role.description(), description) << id;
    };
    check("dialogue", "dialogue", std::nullopt, "Dialogue");
    check("dialogue.Boom", "dialogue", "Boom", "Dialogue (Boom)");
    check("dialogue.dialogue-1", "dialogue", "dialogue-1", "Dialogue");
    check("dialogue.dialogue-2", "dialogue", "dialogue-2", "Dialogue (Dialogue-2)");
    check("effects-12.Wind", "effects-12", "Wind", "Effects-12 (Wind)");
    check("effects-.Wind", "effects-", "Wind", "effects- (Wind)");
    check("Anna.Lav. 1", "Anna", std::nullopt, "Anna");
    check("musical.x", "musical", "x", "musical (x)");
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
