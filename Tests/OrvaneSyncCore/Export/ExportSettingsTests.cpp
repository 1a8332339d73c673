#include "OrvaneSyncCore/Services/Export/AspectRatioHelper.h"
#include "OrvaneSyncCore/Services/Export/ExportSettings.h"
#include "OrvaneSyncCore/Services/Persistence/SettingsCatalogue.h"

#include "OrvaneSyncCore/Export/ExportFixtures.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <set>

namespace orvane {
namespace {

using platform::JSON;

TEST(AspectRatioHelper, HeightsAreEvenAndNothingForUnknownShapes) {
    const auto check = [&](int width, const char* identifier, int height) {
        EXPECT_EQ(AspectRatioHelper::heightFromWidth(width, identifier), height)
            << width << " " << identifier;
    };
    check(1920, "16:9", 1080);
    check(1920, "2.39:1", 804);
    check(1920, "9:16", 3414);
    check(1920, "1:1", 1920);
    check(1921, "1:1", 1922);
    check(2048, "1.85:1", 1108);
    check(1920, "4:3", 1440);
    check(1920, "banana", 0);
    check(1920, "custom", 0);
    check(0, "16:9", 0);
    check(std::numeric_limits<int>::max(), "9:16", 0);
    for (const auto identifier : AspectRatioHelper::presetIdentifiers)
        EXPECT_GT(AspectRatioHelper::ratio(identifier).value_or(0), 0) << identifier;
}

TEST(ExportSettings, AnEmptyStoreGivesTheDefaults) {
    const platform::MemorySettingsStore store;
    const ExportSettings settings = ExportSettings::fromUserDefaults(store, {});
    EXPECT_EQ(settings.frameRate, 24);
    EXPECT_EQ(settings.projectFrameRate, 24);
    EXPECT_EQ(settings.fcpxmlVersion, fcpxml::FCPXMLVersion::v1_14);
    EXPECT_EQ(settings.audioBaseRole, "dialogue");
    EXPECT_EQ(settings.subroleMap, (std::map<int, std::string>{{1, "Mix"},
                                                               {2, "Boom"},
                                                               {3, "Lav 1"},
                                                               {4, "Lav 2"},
                                                               {5, "Lav 3"},
                                                               {6, "Lav 4"},
                                                               {7, "Lav 5"},
                                                               {8, "Lav 6"}}));
    EXPECT_EQ(settings.defaultAudioTracks, 2);
    EXPECT_TRUE(settings.generateSyncClips && settings.generateMulticam && settings.wrapMOSInSyncClip &&
                settings.offspeedAutoKeyword && settings.generateRawMediaEvent);
    EXPECT_EQ(settings.videoResolution, VideoResolutionMode::useVideoFrameSize);
    EXPECT_EQ(settings.spatialConform, SpatialConformType::fill);
    EXPECT_EQ(settings.trimMode, TrimMode::commonDuration);
    EXPECT_EQ(settings.notesSource, NotesSource::both);
    EXPECT_EQ(settings.multicamCodec, MulticamCodec::automatic);
    EXPECT_EQ(settings.atmoDurationSeconds, 180.0);
    EXPECT_EQ(settings.atmoAudioRole, "effects.atmosphere");
    EXPECT_EQ(settings.eventNamePattern, "{eventName} {scene:3}");
    EXPECT_EQ(settings.customNamingPattern, "{scene}-{take}");
    EXPECT_EQ(settings.clipNamingSource, GroupNaming::Source::sceneTake);
    EXPECT_FALSE(settings.experimentalVolumeKeyframes || settings.splitEventsByScene ||
                 settings.generateNativeMOSForOffspeed || settings.wrapNativeMOSInSyncClip);
}

TEST(ExportSettings, ValuesThatMeanNothingReadAsTheDefault) {
    const auto check = [&](const char* key, const JSON& value,
                           const std::function<bool(const ExportSettings&)>& isRight) {
        platform::MemorySettingsStore store;
        registerStandardDefaults(store);
        store.set(key, value);
        EXPECT_TRUE(isRight(ExportSettings::fromUserDefaults(store, {}))) << key << value.dump();
    };
    check("videoResolution", "banana",
          [](const auto& s) { return s.videoResolution == VideoResolutionMode::useVideoFrameSize; });
    check("spatialConform", "banana",
          [](const auto& s) { return s.spatialConform == SpatialConformType::fill; });
    check("trimMode", 7, [](const auto& s) { return s.trimMode == TrimMode::commonDuration; });
    check("notes.source", "banana", [](const auto& s) { return s.notesSource == NotesSource::both; });
    check("multicam.codec", "banana",
          [](const auto& s) { return s.multicamCodec == MulticamCodec::automatic; });
    check("clipNamingSource", "banana",
          [](const auto& s) { return s.clipNamingSource == GroupNaming::Source::sceneTake; });
    check("atmo.duration", -1, [](const auto& s) { return s.atmoDurationSeconds == 180; });
    check("customNamingPattern", "", [](const auto& s) { return s.customNamingPattern == ""; });
    check("overrideAnamorphic", true, [](const auto& s) { return s.overrideAnamorphic; });
    check("globalAudioOffset.frames", 12, [](const auto& s) { return s.globalAudioOffsetSeconds == 0.5; });
    check("globalAudioOffset.frames", -6, [](const auto& s) { return s.globalAudioOffsetSeconds == -0.25; });
}

/// Clips of every kind: two cameras of a scene, one off-speed, one without sound, and one whose channels have
/// no names.
ExportSettings::Request oneOfEach() {
    using namespace test;
    MediaAsset sound = recording(2);
    sound.ixmlData = ixml("12A", "3", {"Anna"});
    sound.channelCount = 2;
    SyncGroup slow = matched(picture("C001C003.mov"), {recording(1)});
    slow.video.sensorFrameRate = slow.video.frameRate = 125;
    ExportSettings::Request request;
    request.groups =
        SyncGroupList{matched(picture("A001C001.mov"), {sound}), matched(picture("B001C001.mov"), {sound}),
                      slow, matched(picture("D001C004.mov"), {recording(8)}),
                      matched(picture("E001C005.mov"), {}, MatchStatus::mos())};
    request.sourceVideo = &request.groups.front().video;
    request.atmoFileURL = FileURL{"/media/atmo.wav"};
    request.smartAudioResults[request.groups.front().id].windowedBestTracks = {{0, 5, 1}};
    return request;
}

TEST(ExportSettings, EachKeyChangesTheDocument) {
    using Settings = std::vector<std::pair<const char*, JSON>>;
    const std::pair<const char*, JSON> split{"export.splitEventsByScene", true},
        native{"offspeed.generateNativeMOS", true}, rate{"offspeed.generateProjectRate", true},
        alternate{"videoResolution", "alternate"}, pixels{"container.aspectRatio", "custom"},
        frames{"globalAudioOffset.frames", 12};
    struct Case {
        std::string key;
        JSON value;
        std::string text; ///< stands in the document another number of times
        Settings with{};  ///< settings without which the key has nothing to say
    };
    std::vector<Case> cases{
        {"generateSyncClips", false, "<sync-clip"},
        {"project.targetFrameRate", 50, "id=\"r1\" frameDuration=\"1/50s\""},
        {"clipNamingSource", "video", "name=\"12A-3"},
        {"customNamingPattern", "{take} of {scene}", "3 of 12A", {{"clipNamingSource", "custom"}}},
        {"namingSeparator", "_", "12A_3"},
        {"videoResolution", "alternate", "height=\"1920\" colorSpace", {{"container.aspectRatio", "2:1"}}},
        {"container.aspectRatio", "1:1", "height=\"3840\" colorSpace", {alternate}},
        {"alternateWidth", 1998, "width=\"1998\"", {alternate, pixels}},
        {"alternateHeight", 858, "height=\"858\"", {alternate, pixels}},
        {"spatialConform", "none", "<adjust-conform type=\"none\"/>"},
        {"trimMode", "none", "duration=\"30s\" format=\"r1\""},
        {"notes.source", "none", "metadataField.note"},
        {"notes.audioPrefix", "Snd:", "\"Snd: Scene 12A"},
        {"multicam.codec", "H.264", "renderFormat=\"H.264\""},
        {"export.wrapMOSInSyncClip", false, "keyword value=\"MOS\""},
        {"export.splitEventsByScene", true, "<event"},
        {"export.eventNamePattern", "S{scene}", "event name=\"S12A\"", {split}},
        {"export.experimentalVolumeKeyframes", true, "<keyframe "},
        {"export.generateRawMediaEvent", false, "event name=\"Source Media\""},
        {"export.rawMediaEventName", "Bin", "event name=\"Bin\""},
        {"offspeed.generateNativeMOS", true, "offspeed.isNativeMOS"},
        {"offspeed.suffix", "_{fps}", "name=\"C001C003_125\"", {native}},
        {"offspeed.separateEvent", true, "event name=\"Native MOS\"", {native}},
        {"offspeed.eventName", "Own", "event name=\"Own\"", {native, {"offspeed.separateEvent", true}}},
        {"offspeed.wrapNativeMOSInSyncClip", true, "<sync-clip", {native}},
        {"offspeed.generateProjectRate", true, "keyword value=\"Project Rate\""},
        {"offspeed.projectRateSuffix", "-{fps}p", "name=\"C001C003-25p\"", {rate}},
        {"offspeed.projectRateSeparateEvent", true, "event name=\"Project Rate\"", {rate}},
        {"offspeed.projectRateEventName",
         "Own",
         "event name=\"Own\"",
         {rate, {"offspeed.projectRateSeparateEvent", true}}},
        {"offspeed.autoKeyword", false, "value=\"Offspeed 125fps\""},
        {"audioBaseRole", "voice", "role=\"voice.Mix\""},
        {"useIXMLTrackNames", false, "role=\"dialogue.Anna\""},
        {"globalAudioOffset.frames", 12, "offset=\"1799999/50s\""},
        {"globalAudioOffset.startMode",
         "fromFilename",
         "offset=\"1799999/50s\"",
         {frames, {"globalAudioOffset.startFromFilename", "D001"}}},
        {"globalAudioOffset.startFromFilename",
         "D001",
         "offset=\"1799999/50s\"",
         {frames, {"globalAudioOffset.startMode", "fromFilename"}}},
        {"globalAudioOffset.startFromTC",
         "11:00:00:00",
         "offset=\"1799999/50s\"",
         {frames, {"globalAudioOffset.startMode", "fromTC"}}},
        {"atmo.duration", 61, "duration=\"61s\""},
        {"atmo.audioRole", "effects.air", "audioRole=\"effects.air\""},
    };
    for (int track = 1; track <= 8; ++track)
        cases.push_back({"defaultSubrole" + std::to_string(track), "Spare", "role=\"dialogue.Spare\""});

    const ExportSettings::Request request = oneOfEach();
    std::set<std::string_view> seen;
    for (const Case& c : cases) {
        platform::MemorySettingsStore store;
        registerStandardDefaults(store);
        for (const auto& [key, value] : c.with) store.setOverride(key, value);
        const auto document = [&] {
            return FCPXMLExporter::exportDocument(request.groups, {},
                                                  ExportSettings::fromUserDefaults(store, request))
                .fcpxmlString;
        };
        const std::string before = document();
        store.setOverride(c.key, c.value);
        EXPECT_NE(test::countOf(document(), c.text), test::countOf(before, c.text)) << c.key;
        seen.insert(c.key);
    }

    // Read by the caller; without effect by design; of metadata and room tone that come in
    // from elsewhere.
    seen.insert(
        {"eventName", "generateMulticam", "overrideAnamorphic", "notes.videoPrefix", "atmo.includeInExport"});
    const std::set<std::string_view> others{"Reports", "LockitNetwork fields", "Smart Audio", "Playback",
                                            "Linear timecode"};
    for (const SettingDescription& setting : SettingsCatalogue::all())
        EXPECT_TRUE(others.contains(setting.family) || seen.contains(setting.key))
            << setting.key << " does nothing";
}

TEST(ExportSettings, ArgumentsGoBeforeTheStore) {
    platform::MemorySettingsStore store;
    store.set("atmo.audioRole", "effects.air");
    store.set("atmo.duration", 60);
    ExportSettings::Request request;
    request.eventName = "Day 3";
    request.generateMulticam = false;
    request.groups = SyncGroupList{test::matched(test::picture(), {test::recording(2)})};
    request.smartAudioResults[request.groups.front().id].bestTrackIndex = 2;
    request.atmoFileURL = FileURL{"/media/atmo.wav"};
    request.atmoAudioRoleOverride = "effects.sea";
    request.atmoDurationOverride = 12.5;
    request.metadataPrefix = "XY_";
    const ExportSettings settings = ExportSettings::fromUserDefaults(store, request);
    EXPECT_EQ(settings.eventName, "Day 3");
    EXPECT_FALSE(settings.generateMulticam);
    EXPECT_EQ(settings.projectFrameRate, 25) << "the clips vote";
    EXPECT_EQ(settings.smartAudioResults.size(), 1U);
    EXPECT_EQ(settings.atmoFileURL, FileURL{"/media/atmo.wav"});
    EXPECT_EQ(settings.atmoAudioRole, "effects.sea");
    EXPECT_EQ(settings.atmoDurationSeconds, 12.5);
    EXPECT_EQ(settings.metadataPrefix, "XY_");
}

TEST(ExportSettings, FrameSizesFollowTheVideoTheAnchorAndTheShape) {
    const MediaAsset uhd = test::picture();
    MediaAsset unknown = test::picture();
    unknown.width = unknown.height = std::nullopt;
    const auto check = [&](const char* name, const MediaAsset* source, std::optional<int> anchor,
                           const char* shape, int storedWidth, int storedHeight, int outputWidth,
                           int outputHeight, int width, int height) {
        platform::MemorySettingsStore store;
        store.set("container.aspectRatio", shape);
        store.set("alternateWidth", storedWidth);
        store.set("alternateHeight", storedHeight);
        ExportSettings::Request request;
        request.sourceVideo = source;
        request.aspectAnchorWidth = anchor;
        const ExportSettings s = ExportSettings::fromUserDefaults(store, request);
        EXPECT_EQ(s.outputWidth, outputWidth) << name;
        EXPECT_EQ(s.outputHeight, outputHeight) << name;
        EXPECT_EQ(s.alternateWidth, width) << name;
        EXPECT_EQ(s.alternateHeight, height) << name;
    };
    check("nothing known", nullptr, std::nullopt, "16:9", 0, 0, 1920, 1080, 1920, 1080);
    check("the video's width is the anchor", &uhd, std::nullopt, "2:1", 0, 0, 3840, 2160, 3840, 1920);
    check("the given anchor wins", &uhd, 2048, "2:1", 999, 999, 3840, 2160, 2048, 1024);
    check("the stored width is the last anchor", &unknown, std::nullopt, "1:1", 1000, 0, 1920, 1080, 1000,
          1000);
    check("pixels", &uhd, 2048, "custom", 1280, 720, 3840, 2160, 1280, 720);
    check("pixels that are none", &uhd, 2048, "custom", -5, 0, 3840, 2160, 1920, 1080);
    check("no such shape", &uhd, std::nullopt, "banana", 0, 0, 3840, 2160, 3840, 1080);
    check("an anchor that is none", &uhd, 0, "16:9", 0, 0, 3840, 2160, 1920, 1080);
}

TEST(ExportSettings, TheGlobalOffsetStartsWhereTheModeSays) {
    const auto check = [&](const char* mode, bool stored, const std::optional<std::string>& filename,
                           const std::optional<std::string>& timecode) {
        platform::MemorySettingsStore store;
        store.set("globalAudioOffset.startMode", mode);
        if (stored) {
            store.set("globalAudioOffset.startFromFilename", "A002C010");
            store.set("globalAudioOffset.startFromTC", "10:00:00:00");
        }
        const ExportSettings s = ExportSettings::fromUserDefaults(store, {});
        EXPECT_EQ(s.globalAudioOffsetStartingFromFilename, filename) << mode;
        EXPECT_EQ(s.globalAudioOffsetStartingFromTC, timecode) << mode;
    };
    check("all", true, std::nullopt, std::nullopt);
    check("banana", true, std::nullopt, std::nullopt);
    check("fromFilename", true, "A002C010", std::nullopt);
    check("fromTC", true, std::nullopt, "10:00:00:00");
    check("fromTC", false, std::nullopt, std::nullopt);
}

} // namespace
} // namespace orvane
