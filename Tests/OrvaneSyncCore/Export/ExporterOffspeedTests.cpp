#include "OrvaneSyncCore/Services/Export/FCPXMLExporterStages.h"

#include "OrvaneSyncCore/Export/ExportFixtures.h"

#include <limits>

namespace orvane {
namespace {

using namespace test;
using Lines = std::vector<std::string>;

/// Its sensor and its file run at five times the project's rate; ten seconds of the file are ten seconds of
/// real time.
SyncGroup slowMotion(MatchStatus status = MatchStatus::matched()) {
    SyncGroup group = matched(picture("A003C012.mov"), {recording(1)}, status);
    group.video.sensorFrameRate = group.video.frameRate = 125;
    group.video.durationSeconds = 10;
    return group;
}

ExportSettings withVariants() {
    ExportSettings settings = settingsAt(25);
    settings.set(settings::generateNativeMOS, true);
    settings.set(settings::generateProjectRate, true);
    return settings;
}

TEST(ExporterOffspeed, AClipWithAllItsVariants) {
    ExportSettings settings = withVariants();
    settings.set(settings::generateRawMediaEvent, true);
    settings.set(settings::nativeMOSSeparateEvent, true);
    expectGolden("offspeed", exported(slowMotion(), settings));
    const ExportResult result = FCPXMLExporter::exportDocument(SyncGroupList{slowMotion()}, {}, settings);
    EXPECT_EQ(std::vector({result.nativeRateCount, result.projectRateCount, result.sourceMediaCount,
                           result.eventCount, result.sceneEventCount}),
              std::vector({1, 1, 2, 3, 0}));
}

TEST(ExporterOffspeed, OnlyFilesAtTheSensorsRateAreRetimed) {
    const std::optional<double> none, nan = std::numeric_limits<double>::quiet_NaN();
    // `points`: "value -> time" of the last point; empty: no time map
    const auto check = [&](const char* name, std::optional<double> sensor, std::optional<double> project,
                           std::optional<double> file, std::optional<double> seconds,
                           const std::optional<SourceRateDomain>& domain, const std::string& points) {
        SyncGroup group = matched(picture(), {recording(1)});
        group.video.sensorFrameRate = sensor;
        group.video.projectFrameRate = project;
        group.video.frameRate = file;
        group.video.durationSeconds = seconds;
        group.video.sourceRateDomainOverride = domain;
        const auto map = FCPXMLExporter::buildTimeMap(group, project.value_or(24));
        EXPECT_EQ(map ? map->points.back().value.description() + " -> " +
                            map->points.back().time.description()
                      : "",
                  points)
            << name;
        const std::string document = exported(group, settingsAt(24));
        EXPECT_EQ(countOf(document, "<timeMap"), points.empty() ? 0U : 1U) << name;
        EXPECT_EQ(countOf(document, "<sync-source"), points.empty() ? 1U : 0U) << name;
    };
    check("slow", 120, 24, 120, 10, {}, "10s -> 50s");
    check("fast", 12, 24, 12, 10, {}, "10s -> 5s");
    check("no more than a twentieth", 25.1, 24, 25.1, 10, {}, "");
    check("the sensor's word against the file's", 24.5, 24, 24.5, 10, {}, "");
    check("already at the project's speed", 120, 24, 24, 10, {}, "");
    check("the user says it is not", 120, 24, 24, 10, SourceRateDomain::sensorRate, "10s -> 50s");
    check("the user says it is", 120, 24, 120, 10, SourceRateDomain::conformedExternally, "");
    check("cut to frames", 60, 29.97, 60, 1.05, {}, "31031/30000s -> 21021/10000s");
    check("no file rate", 120, 24, none, 10, {}, "10s -> 50s");
    check("no sensor rate", none, 24, 120, 10, {}, "");
    check("no project rate", 120, none, 120, 10, {}, "");
    check("no project", 120, 0, 120, 10, {}, "");
    check("no length", 120, 24, 120, none, {}, "");
    check("a length of nothing", 120, 24, 120, 0, {}, "");
    check("a sensor that runs backwards", -120, 24, 120, 10, {}, "");
    check("no number", nan, 24, 120, 10, {}, "");
    check("beyond all frames", 1e300, 24, 120, 10, {}, "");
}

/// The changes are made to a retimed clip.
TEST(ExporterOffspeed, EachChangeShows) {
    const auto rates = [](double sensor, double file) {
        return [=](SyncGroup& group, ExportSettings&) {
            group.video.sensorFrameRate = sensor;
            group.video.frameRate = file;
        };
    };
    const auto place = [](const std::optional<std::string>& start, std::optional<double> seconds) {
        return [=](SyncGroup& group, ExportSettings&) {
            group.video.startTimecodeString = start;
            group.video.durationSeconds = seconds;
        };
    };
    const auto variants = [](bool all, bool native, std::optional<bool> rate) {
        return [=](SyncGroup& group, ExportSettings& settings) {
            settings.set(settings::generateNativeMOS, all);
            settings.set(settings::generateProjectRate, all);
            group.generateNativeMOSClip = native;
            group.generateProjectRateClipFlag = rate;
        };
    };
    expectGoldenChanges(
        "offspeed-changes", slowMotion(), withVariants(),
        {
            {"conformed", rates(47.952, 25)},
            {"at the project's speed", rates(25, 125)},
            {"a drop-frame rate, a start and a length between frames",
             [&](auto& g, auto& s) {
                 rates(59.94, 59.94)(g, s);
                 place("00:00:01:00", 1.001)(g, s);
             }},
            {"no keywords, and the facts stay",
             [](auto&, auto& s) { s.set(settings::offspeedAutoKeyword, false); }},
            {"without sound",
             [](auto& g, auto&) {
                 g.audioMatches.clear();
                 g.matchStatus = MatchStatus::mos();
             }},
            {"without a match", [](auto& g, auto&) { g.matchStatus = MatchStatus::unmatched(); }},
            {"suffixes of the clip go before those of the settings",
             [](auto& g, auto& s) {
                 g.nativeMOSNameSuffix = "_{fps}";
                 g.projectRateNameSuffix = "{fps} p";
                 s.set(settings::nativeMOSSuffix, "unused");
                 s.set(settings::projectRateSuffix, "unused");
             }},
            {"nothing known of start and length", place({}, {})},
            {"a container for the native clip",
             [](auto&, auto& s) { s.set(settings::wrapNativeMOSInSyncClip, true); }},
            {"no variants", variants(false, false, {})},
            {"the native clip of this clip alone", variants(false, true, {})},
            {"the project-rate clip of this clip alone", variants(false, false, true)},
            {"the clip's no does not switch the settings off", variants(true, false, false)},
            {"a gain, for both clips with sound", [](auto& g, auto&) { g.masterGainDB = -3; }},
        });
    SyncGroup odd = slowMotion();
    for (const auto& [rate, text] :
         {std::pair(120.0, "120.0"), {119.88, "119.88"}, {100000.0, "100000.0"}, {0.25, "0.25"}}) {
        odd.video.sensorFrameRate = rate;
        EXPECT_EQ(countOf(exported(odd, withVariants()), std::string("sourceFps\" value=\"") + text + "\""),
                  1U);
    }
}

TEST(ExporterOffspeed, VariantsGoToTheirSceneOrTheirEvent) {
    MediaAsset sound = recording(1);
    sound.ixmlData = ixml("7", "1");
    SyncGroup group = slowMotion();
    group.audioMatches.front().audio = sound;
    group.manualClipName = "x";
    ExportSettings settings = withVariants();
    const auto events = [&] { return eventsOf(exported(group, settings)); };
    EXPECT_EQ(events(), "Synced: x 125fps; x [125 FPS]; x 25fps;");
    settings.set(settings::splitEventsByScene, true);
    EXPECT_EQ(events(), "Synced 007: x 125fps; x [125 FPS]; x 25fps;");
    settings.set(settings::nativeMOSSeparateEvent, true);
    EXPECT_EQ(events(), "Synced 007: x 125fps; x 25fps; | Native MOS: x [125 FPS];");
    settings.set(settings::projectRateSeparateEvent, true);
    EXPECT_EQ(events(), "Synced 007: x 125fps; | Native MOS: x [125 FPS]; | Project Rate: x 25fps;");
}

TEST(ExporterRawMedia, HoldsEveryFileOnce) {
    const MediaAsset shared = recording(2, "shared.wav");
    SyncGroup first = matched(picture("a.mov"), {shared}), second = matched(picture("b.mov"), {shared});
    SyncGroup unmatched =
        matched(picture("u.mov"), {recording(1, "alone.wav"), shared}, MatchStatus::unmatched());
    unmatched.video.frameRate = 29.97;
    unmatched.video.width = std::nullopt;
    WildTrack wild(recording(1, "wild.wav"), "Wind"), same(shared);
    MediaAsset unknown(FileURL{"/media/unknown.wav"}, AssetKind::audio);
    ExportSettings settings = settingsAt(25);
    settings.set(settings::generateSyncClips, false);
    settings.set(settings::generateMulticam, false);
    settings.set(settings::generateRawMediaEvent, true);
    settings.set(settings::rawMediaEventName, "Bin");
    const std::string document =
        FCPXMLExporter::exportDocument({first, second, unmatched}, {wild, same, WildTrack(unknown)}, settings)
            .fcpxmlString;
    expectGolden("source-media", document);
}

} // namespace
} // namespace orvane
