#include "OrvaneSyncCore/Services/Export/FCPXMLExporterStages.h"

#include "OrvaneSyncCore/Export/ExportFixtures.h"

#include <limits>

namespace orvane {
namespace {

using namespace test;
using Lines = std::vector<std::string>;

/// Five times as fast as the project; ten seconds of the file are ten seconds of the set.
SyncGroup slowMotion(MatchStatus status = MatchStatus::matched()) {
    SyncGroup group = matched(picture("A003C012.mov"), {recording(1)}, status);
    group.video.sensorFrameRate = group.video.frameRate = 125;
    group.video.durationSeconds = 10;
    return group;
}

ExportSettings withVariants() {
    ExportSettings settings = settingsAt(25);
    settings.generateNativeMOSForOffspeed = settings.generateProjectRateForOffspeed = true;
    return settings;
}

TEST(ExporterOffspeed, AClipWithAllItsVariants) {
    ExportSettings settings = withVariants();
    settings.generateRawMediaEvent = settings.separateEventForNativeMOS = true;
    expectGolden("offspeed", exported(slowMotion(), settings));
    const ExportResult result = FCPXMLExporter::exportDocument(SyncGroupList{slowMotion()}, {}, settings);
    EXPECT_EQ(std::vector({result.nativeRateCount, result.projectRateCount, result.sourceMediaCount,
                           result.eventCount, result.sceneEventCount}),
              std::vector({1, 1, 2, 3, 0}));
}

TEST(ExporterOffspeed, OnlyFilesAtTheSensorsRateAreRetimed) {
    const std::optional<double> none, nan = std::numeric_limits<double>::quiet_NaN();
    // `points`: "value -> time" of the end; empty: no time map
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

TEST(ExporterOffspeed, KeywordsFollowTheClip) {
    const auto keywords = [](std::initializer_list<const char*> values) {
        Lines lines;
        for (const std::string value : values) lines.push_back("<keyword value=\"" + value + "\"/>");
        return lines;
    };
    expect(
        {
            {"retimed", [](auto&, auto&) {}, "<keyword",
             keywords({"Synced", "Offspeed", "Offspeed 125fps", "Slow Motion", "Offspeed", "Offspeed 125fps",
                       "Native MOS", "Offspeed", "Offspeed 125fps", "Project Rate"})},
            {"conformed",
             [](auto& g, auto& s) {
                 g.video.frameRate = 25;
                 g.video.sensorFrameRate = 47.952;
                 s.generateNativeMOSForOffspeed = s.generateProjectRateForOffspeed = false;
             },
             "<keyword", keywords({"Synced", "Offspeed", "Offspeed 48fps"})},
            {"not wanted", [](auto&, auto& s) { s.offspeedAutoKeyword = false; }, "<keyword",
             keywords({"Synced"})},
            {"not wanted, and the facts stay",
             [](auto&, auto& s) { s.offspeedAutoKeyword = false; },
             "com.orvanelabs.offspeed.isNativeMOS",
             {"<md key=\"com.orvanelabs.offspeed.isNativeMOS\" value=\"true\" editable=\"1\" "
              "type=\"string\" displayName=\"Native MOS Clip\" source=\"OrvaneSync\"/>"}},
            {"without sound",
             [](auto& g, auto&) {
                 g.audioMatches.clear();
                 g.matchStatus = MatchStatus::mos();
             },
             "<keyword", keywords({"MOS"})},
        },
        slowMotion(), withVariants());
}

TEST(ExporterOffspeed, TheNativeClipCountsAsTheSensorDoes) {
    const std::string tail = "\" tcFormat=\"NDF\" videoRole=\"video\">";
    ExportSettings usual = settingsAt(25);
    usual.generateNativeMOSForOffspeed = true;
    const auto clip = [&](const char* name, const std::string& start, const char* duration) {
        return Lines{"<asset-clip ref=\"r3\" offset=\"" + start + "\" name=\"" + name + "\" start=\"" +
                     start + "\" duration=\"" + duration + tail};
    };
    expect(
        {
            {"by its own suffix",
             [](auto& g, auto& s) {
                 g.nativeMOSNameSuffix = "_{fps}";
                 s.nativeMOSSuffix = "unused";
             },
             "A003C012_125\"", clip("A003C012_125", "36000s", "10s")},
            {"drop-frame rates too",
             [](auto& g, auto&) {
                 g.video.sensorFrameRate = 59.94;
                 g.video.startTimecodeString = "00:00:01:00";
                 g.video.durationSeconds = 1.001;
             },
             "[59.9 FPS]\" start", clip("A003C012 [59.9 FPS]", "59059/60000s", "59059/60000s")},
            {"nothing known of start and length",
             [](auto& g, auto&) {
                 g.video.startTimecodeString = std::nullopt;
                 g.video.durationSeconds = std::nullopt;
             },
             "[125 FPS]\" start", clip("A003C012 [125 FPS]", "0s", "8s")},
            {"in a container",
             [](auto&, auto& s) { s.wrapNativeMOSInSyncClip = true; },
             "<sync-clip offset=\"36000s\" name=\"A003C012 [125",
             {"<sync-clip offset=\"36000s\" name=\"A003C012 [125 FPS]\" start=\"36000s\" duration=\"10s\" "
              "format=\"r1\" tcFormat=\"NDF\">"}},
            {"of this clip alone",
             [](auto& g, auto& s) {
                 s.generateNativeMOSForOffspeed = false;
                 g.generateNativeMOSClip = true;
             },
             "[125 FPS]\" start", clip("A003C012 [125 FPS]", "36000s", "10s")},
            {"not of a clip at the project's speed",
             [](auto& g, auto&) { g.video.sensorFrameRate = 25; },
             "FPS]",
             {}},
            {"not of a clip without sound",
             [](auto& g, auto&) {
                 g.audioMatches.clear();
                 g.matchStatus = MatchStatus::mos();
             },
             "FPS]",
             {}},
            {"nor of one without a match",
             [](auto& g, auto&) { g.matchStatus = MatchStatus::unmatched(); },
             "FPS]",
             {}},
        },
        slowMotion(), usual);
    SyncGroup odd = slowMotion();
    for (const auto& [rate, text] :
         {std::pair(120.0, "120.0"), {119.88, "119.88"}, {100000.0, "100000.0"}, {0.25, "0.25"}}) {
        odd.video.sensorFrameRate = rate;
        EXPECT_EQ(countOf(exported(odd, usual), std::string("sourceFps\" value=\"") + text + "\""), 1U);
    }
}

TEST(ExporterOffspeed, TheProjectRateClipKeepsItsSound) {
    ExportSettings usual = settingsAt(25);
    usual.generateProjectRateForOffspeed = true;
    const auto head = [](const char* name) {
        return Lines{std::string("<sync-clip offset=\"36000s\" name=\"A003C012 ") + name +
                     "\" start=\"36000s\" duration=\"10s\" format=\"r1\" tcFormat=\"NDF\">"};
    };
    const char* where = "name=\"A003C012 25";
    expect(
        {
            {"by the settings", [](auto&, auto&) {}, where, head("25fps")},
            {"the clip's no does not switch the settings off",
             [](auto& g, auto&) { g.generateProjectRateClipFlag = false; }, where, head("25fps")},
            {"of this clip alone, with its own suffix",
             [](auto& g, auto& s) {
                 s.generateProjectRateForOffspeed = false;
                 g.generateProjectRateClipFlag = true;
                 g.projectRateNameSuffix = "{fps} p";
             },
             where, head("25 p")},
            {"one without", [](auto&, auto& s) { s.generateProjectRateForOffspeed = false; }, where, {}},
            {"the only sound", [](auto&, auto&) {}, "<sync-source", {"<sync-source sourceID=\"connected\">"}},
            {"no gap in its gain",
             [](auto& g, auto&) { g.masterGainDB = -3; },
             "adjust-volume",
             {"<adjust-volume amount=\"-3dB\"/>", "<adjust-volume amount=\"-3dB\"/>"}},
        },
        slowMotion(), usual);
}

std::string namesByEvent(const SyncGroupList& groups, const ExportSettings& settings,
                         const std::vector<WildTrack>& wild = {}) {
    std::string names;
    const std::string document = FCPXMLExporter::exportDocument(groups, wild, settings).fcpxmlString;
    for (const std::string& line : linesWith(document, "name=\"")) {
        const auto from = line.find("name=\"") + 6;
        const std::string name = line.substr(from, line.find('"', from) - from);
        if (line.starts_with("<event")) names += (names.empty() ? "" : " | ") + name + ":";
        if (line.starts_with("<sync-clip") || (line.starts_with("<asset-clip") && !line.ends_with("r4\"")))
            if (line.find(" format=\"r4\"") == std::string::npos) names += " " + name + ";";
    }
    return names;
}

TEST(ExporterOffspeed, VariantsGoToTheirSceneOrTheirEvent) {
    MediaAsset sound = recording(1);
    sound.ixmlData = ixml("7", "1");
    SyncGroup group = slowMotion();
    group.audioMatches.front().audio = sound;
    group.manualClipName = "x";
    ExportSettings settings = withVariants();
    EXPECT_EQ(namesByEvent({group}, settings), "Synced: x 125fps; x [125 FPS]; x 25fps;");
    settings.splitEventsByScene = true;
    EXPECT_EQ(namesByEvent({group}, settings), "Synced 007: x 125fps; x [125 FPS]; x 25fps;");
    settings.separateEventForNativeMOS = true;
    EXPECT_EQ(namesByEvent({group}, settings), "Synced 007: x 125fps; x 25fps; | Native MOS: x [125 FPS];");
    settings.separateEventForProjectRate = true;
    EXPECT_EQ(namesByEvent({group}, settings),
              "Synced 007: x 125fps; | Native MOS: x [125 FPS]; | Project Rate: x 25fps;");
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
    settings.generateSyncClips = settings.generateMulticam = false;
    settings.generateRawMediaEvent = true;
    settings.rawMediaEventName = "Bin";
    const std::string document =
        FCPXMLExporter::exportDocument({first, second, unmatched}, {wild, same, WildTrack(unknown)}, settings)
            .fcpxmlString;
    const std::string bin = document.substr(document.find("<event name=\"Bin\""));
    const auto clip = [](const char* ref, const char* name, const char* start, const char* duration,
                         const char* format) {
        return std::string("<asset-clip ref=\"") + ref + "\" offset=\"0s\" name=\"" + name + "\" start=\"" +
               start + "\" duration=\"" + duration + "\"" + format + " videoRole=\"video\"/>";
    };
    const char* ndf = " tcFormat=\"NDF\"";
    EXPECT_EQ(
        linesWith(bin, "<asset-clip"),
        (Lines{clip("r3", "a.mov", "36000s", "20s", ndf), clip("r6", "b.mov", "36000s", "20s", ndf),
               clip("r10", "u.mov", "539998459/15000s", "599599/30000s", " tcFormat=\"DF\""),
               clip("r5", "shared.wav", "71999/2s", "30s", ""),
               clip("r11", "alone.wav", "71999/2s", "30s", ""),
               clip("r12", "wild.wav", "71999/2s", "30s", ""), clip("r13", "unknown.wav", "0s", "40s", "")}));
    EXPECT_EQ(linesWith(document, "id=\"r9\""),
              Lines{"<format id=\"r9\" frameDuration=\"1001/30000s\" width=\"1920\" height=\"2160\"/>"});
    EXPECT_EQ(countOf(bin, "<sync-source") + countOf(bin, "<keyword") + countOf(bin, "<adjust"), 0U);
}

} // namespace
} // namespace orvane
