#include "OrvaneSyncCore/Models/MediaAsset.h"
#include "OrvaneSyncCore/Models/WildTrack.h"

#include "Support/Assets.h"
#include "Support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <ctime>

namespace orvane {
namespace {

using Rate = std::optional<double>;
constexpr auto sensorRate = SourceRateDomain::sensorRate;
constexpr auto conformed = SourceRateDomain::conformedExternally;

TEST(MediaAsset, kindsByExtension) {
    using Kind = std::optional<AssetKind>;
    const std::pair<const char*, Kind> cases[] = {{"/a/x.MOV", AssetKind::video},
                                                  {"/a/x.m4v", AssetKind::video},
                                                  {"/a/x.Bwf", AssetKind::audio},
                                                  {"/a/x.aiff", AssetKind::audio},
                                                  {"/a/x.mp3", {}},
                                                  {"/a/mov", {}},
                                                  {"/a/.mov", {}},
                                                  {"/a.mov/x", {}}};
    for (const auto& [path, kind] : cases) EXPECT_EQ(assetKindFrom(FileURL{path}), kind) << path;
}

TEST(MediaAsset, ratesAndDomains) {
    struct Case {
        Rate file, sensor, project;
        double factor;
        bool isOffspeed, differ;
        SourceRateDomain domain;
    };
    for (const Case& test : {
             Case{24, 120, 24, 5, true, true, conformed},
             Case{120, 120, 24, 5, true, true, sensorRate},
             Case{24, 24.5, 24, 24.5 / 24, false, true, conformed},
             Case{23.976, 24, 24, 1, false, false, sensorRate},
             Case{{}, 120, 24, 5, true, true, sensorRate},
             Case{24, 120, {}, 1, false, false, sensorRate},
             Case{24, {}, 24, 1, false, false, conformed},
             Case{50, {}, 24, 1, false, false, sensorRate},
             Case{24, 12, 24, 0.5, true, true, conformed},
             Case{24, 120, 0, 1, false, false, conformed},
         }) {
        MediaAsset asset = test::video("a.mov", "", 10);
        asset.frameRate = test.file;
        asset.sensorFrameRate = test.sensor;
        asset.projectFrameRate = test.project;
        SCOPED_TRACE(std::to_string(test.sensor.value_or(0)) + " over " +
                     std::to_string(test.project.value_or(0)));
        EXPECT_DOUBLE_EQ(asset.slowMotionFactor(), test.factor);
        EXPECT_EQ(asset.isOffspeed(), test.isOffspeed);
        EXPECT_EQ(OffspeedDetector::ratesDifferSignificantly(test.sensor, test.project), test.differ);
        EXPECT_EQ(OffspeedDetector::ratesDifferSignificantly(test.project, test.sensor), test.differ);
        EXPECT_EQ(asset.sourceRateDomain(), test.domain);
        EXPECT_DOUBLE_EQ(*asset.realDurationSeconds(), test.domain == conformed ? 10 / test.factor : 10);
        const auto confidence = OffspeedDetector::classify(test.sensor, test.project, true);
        EXPECT_EQ(confidence, test.differ ? std::optional(OffspeedConfidence::confirmed(true, test.factor))
                                          : std::nullopt);
        EXPECT_EQ(confidence, OffspeedDetector::classify(test.sensor, test.project, false))
            << "the vendor's word changes nothing";
        asset.sourceRateDomainOverride = sensorRate;
        EXPECT_EQ(asset.realDurationSeconds(), 10) << "the user goes first";
        asset.durationSeconds.reset();
        EXPECT_EQ(asset.realDurationSeconds(), std::nullopt);
    }
}

TEST(MediaAsset, describesItsFormat) {
    const auto described = [](AssetKind kind, std::optional<int> a, std::optional<int> b, Rate rate) {
        MediaAsset asset(FileURL{"/a/b"}, kind);
        asset.width = asset.channelCount = a;
        asset.height = b;
        asset.frameRate = asset.sampleRate = rate;
        return asset.formatDescription();
    };
    EXPECT_EQ(described(AssetKind::audio, 8, {}, 48000), "8ch 48kHz");
    EXPECT_EQ(described(AssetKind::audio, 1, {}, 44100), "1ch 44kHz");
    EXPECT_EQ(described(AssetKind::audio, {}, {}, {}), "?ch ?kHz");
    EXPECT_EQ(described(AssetKind::video, 1920, 1080, 23.976), "1920x1080 24 fps");
    EXPECT_EQ(described(AssetKind::video, 1920, {}, 119.88), "? 120 fps");
    EXPECT_EQ(described(AssetKind::video, {}, 1080, {}), "? ? fps");
}

TEST(MediaAsset, namesAndFlags) {
    MediaAsset asset = test::audio("SC\xC3\x89NE 1.Mix.WAV");
    EXPECT_EQ(asset.normalizedName(), "sc\xC3\xA9ne 1.mix");
    EXPECT_EQ(asset.filenameStem(), "SC\xC3\x89NE 1.Mix");
    EXPECT_FALSE(asset.isAtmo());
    asset.ixmlData = IXMLData{};
    for (const auto& [flag, is] : {std::pair{"True", true}, {"TRUE", true}, {"1", false}, {"", false}}) {
        asset.ixmlData->wildTrack = asset.ixmlData->circled = flag;
        EXPECT_EQ(asset.isAtmo(), is) << flag;
        EXPECT_EQ(asset.ixmlData->isCircled(), is) << flag;
    }
    EXPECT_TRUE(test::audio("x_ambient.wav").isAtmo());

    MediaAsset other = asset;
    other.filename = "elsewhere";
    EXPECT_TRUE(asset == other);
    EXPECT_FALSE(asset == test::audio(asset.filename)) << "the same file, another asset";
    EXPECT_FALSE(asset.isSuspectedOffspeedUnconfirmed());
    asset.offspeedConfidence = OffspeedConfidence::suspectedUnconfirmed(1);
    EXPECT_TRUE(asset.isSuspectedOffspeedUnconfirmed());

    EXPECT_EQ(WildTrack(asset).customName, asset.filenameStem());
    EXPECT_EQ(WildTrack(asset, "").customName, asset.filenameStem());
    EXPECT_EQ(WildTrack(asset, "Rain").customName, "Rain");
    EXPECT_EQ(WildTrack(asset).id, asset.id);
}

TEST(MediaAsset, datesInFileNames) {
    const test::ScopedEnvironment zone("TZ", "Europe/Berlin");
    ::tzset();
    const std::map<std::string, std::vector<const char*>> cases{
        {"2024-05-17T10:00:00Z",
         {"A001_C002_240517_R1.mov", "240517.mov", "991332_x_240517.mov", // there is no month 13
          "240517_240518.mov", "_240517"}},
        {"2024-01-17T11:00:00Z", {"x-240117"}},
        {"1980-01-01T11:00:00Z", {"800101.mov"}},
        {"2079-01-01T11:00:00Z", {"790101.mov"}},
        {"2024-03-02T11:00:00Z", {"240231.mov"}},
        {"",
         {"A001C002240517.mov", "2405171.mov", "24051.mov", "x 240517 y", "\u066240517.mov",
          "991332_240517_.mov", // the separator belongs to the first number
          "240017.mov", "240532.mov", "240500.mov", "24011A.mov", "", "_"}}};
    for (const auto& [date, names] : cases)
        for (const char* name : names) {
            const auto found = MediaAsset::shootDateFromFilename(name);
            EXPECT_EQ(found ? iso8601(*found) : "", date) << name;
        }
}

TEST(MediaAsset, shootDayIsThatOfTheName) {
    const test::ScopedEnvironment zone("TZ", "Europe/Berlin");
    ::tzset();
    MediaAsset asset = test::video("A_240517.mov");
    asset.contentCreatedDate = dateFromISO8601("2023-12-31T23:30:00Z");
    EXPECT_EQ(iso8601(*asset.shootDay()), "2024-05-16T22:00:00Z");
    asset.filename = "000501.mov";
    EXPECT_EQ(iso8601(*asset.shootDay()), "2023-12-31T23:00:00Z") << "a running number";
    asset.filename = "A.mov";
    EXPECT_EQ(iso8601(*asset.shootDay()), "2023-12-31T23:00:00Z") << "already next year in Berlin";
    asset.contentCreatedDate.reset();
    EXPECT_EQ(asset.shootDay(), std::nullopt);
}

TEST(Calendar, startOfDayWhereClocksJump) {
    struct Case {
        const char* zone;
        const char* moment;
        const char* start;
    };
    for (const Case& test : {
             Case{"Europe/Berlin", "2024-03-31T20:00:00Z", "2024-03-30T23:00:00Z"},
             Case{"Europe/Berlin", "2024-10-27T20:00:00Z", "2024-10-26T22:00:00Z"},
             Case{"America/Sao_Paulo", "2018-11-04T15:00:00Z",
                  "2018-11-04T03:00:00Z"}, // midnight to one do not exist
             Case{"America/Havana", "2024-11-03T15:00:00Z", "2024-11-03T04:00:00Z"}, // midnight comes twice
             Case{"America/Havana", "2024-11-03T04:30:00Z", "2024-11-03T04:00:00Z"},
             Case{"Australia/Lord_Howe", "2024-10-05T20:00:00Z", "2024-10-05T13:30:00Z"},
             Case{"Pacific/Apia", "2011-12-31T09:00:00Z",
                  "2011-12-30T10:00:00Z"}, // the day before is missing
             Case{"UTC", "1969-12-31T23:59:59.999Z", "1969-12-31T00:00:00Z"},
             Case{"UTC", "2024-05-17T00:00:00Z", "2024-05-17T00:00:00Z"},
         }) {
        const test::ScopedEnvironment zone("TZ", test.zone);
        ::tzset();
        const Date moment = *dateFromISO8601(test.moment);
        EXPECT_EQ(iso8601(calendar::startOfDay(moment)), test.start) << test.zone << " " << test.moment;
        calendar::DayStarts starts;
        for (int i = 0; i < 200; ++i) { // half hours of four days, out of order
            const Date other = moment + std::chrono::minutes(30 * (i * 77 % 200 - 100));
            EXPECT_EQ(iso8601(starts.of(other)), iso8601(calendar::startOfDay(other))) << test.zone;
        }
    }
    EXPECT_EQ(calendar::date({.year = 0, .month = 1, .day = 1}), std::nullopt);
    EXPECT_EQ(calendar::date({.year = 10000, .month = 1, .day = 1}), std::nullopt);
}

TEST(Dates, iso8601) {
    const std::pair<const char*, const char*> cases[] = {
        {"2024-05-17T10:00:00Z", "2024-05-17T10:00:00Z"},
        {"2024-05-17T10:00:00.5+02:00", "2024-05-17T08:00:00.500Z"},
        {"2024-02-29T23:30:00-0030", "2024-03-01T00:00:00Z"},
        {"1969-12-31T23:59:59.001Z", "1969-12-31T23:59:59.001Z"},
        {"2024-05-17T10:00:00.0009Z", "2024-05-17T10:00:00Z"}};
    for (const auto& [text, printed] : cases)
        EXPECT_EQ(iso8601(dateFromISO8601(text).value()), printed) << text;
    for (const char* text :
         {"2024-05-17T10:00:00", "2024-05-17 10:00:00Z", "2023-02-29T10:00:00Z", "2024-05-17T24:00:00Z",
          "2024-05-17T10:00:61Z", "2024-05-17T10:00:00.Z", "2024-05-17T10:00:00Zx", "2024-05-17T10:00:00+2",
          "2024-05-17T10:00:00+24:00", "24-05-17T10:00:00Z", ""})
        EXPECT_FALSE(dateFromISO8601(text)) << text;
}

TEST(FileURL, textsLeadBackToTheFile) {
    const std::pair<const char*, const char*> cases[] = {{"/a/b c.mov", "file:///a/b%20c.mov"},
                                                         {"/a/100%;?#.wav", "file:///a/100%25%3B%3F%23.wav"},
                                                         {"/\xC3\xA9", "file:///%C3%A9"},
                                                         {"/\xFF\n", "file:///%FF%0A"},
                                                         {"/", "file:///"}};
    for (const auto& [path, text] : cases) {
        EXPECT_EQ(FileURL{path}.absoluteString(), text);
        EXPECT_EQ(FileURL::fromAbsoluteString(text), FileURL{path}) << text;
    }
    EXPECT_EQ(FileURL::fromAbsoluteString("file://localhost/a"), FileURL{"/a"});
    for (const char* text : {"", "/a", "http:///a", "file://server/a", "file://localhost", "file:///%4",
                             "file:///%zz", "file:///%00"})
        EXPECT_EQ(FileURL::fromAbsoluteString(text), std::nullopt) << text;

    const FileURL odd{"/a.b/\xFFx.Mov/"};
    EXPECT_EQ(odd.lastPathComponent(), "\xEF\xBF\xBDx.Mov");
    EXPECT_EQ(odd.lowercasedExtension(), "mov");
    EXPECT_EQ(FileURL{"/a.b/.hidden"}.lowercasedExtension(), "");
    EXPECT_EQ(FileURL{"/a.b/c"}.lowercasedExtension(), "");
}

} // namespace
} // namespace orvane
