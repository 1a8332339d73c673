#include "OrvaneSyncCore/Services/Export/AspectRatioHelper.h"
#include "OrvaneSyncCore/Services/Export/ExportSettings.h"
#include "OrvaneSyncCore/Services/Persistence/SettingsCatalogue.h"

#include "OrvaneSyncCore/Export/ExportFixtures.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace orvane {
namespace {

using platform::JSON;

TEST(AspectRatioHelper, HeightsAreEvenAndNothingForUnknownShapes) {
    const struct {
        int width;
        const char* identifier;
        int height;
    } cases[] = {
        {1920, "16:9", 1080},
        {1920, "2.39:1", 804},
        {1920, "9:16", 3414},
        {1920, "1:1", 1920},
        {1921, "1:1", 1922},
        {2048, "1.85:1", 1108},
        {1920, "4:3", 1440},
        {1920, "banana", 0},
        {1920, "custom", 0},
        {0, "16:9", 0},
        {std::numeric_limits<int>::max(), "9:16", 0},
    };
    for (const auto& c : cases)
        EXPECT_EQ(AspectRatioHelper::heightFromWidth(c.width, c.identifier), c.height)
            << c.width << " " << c.identifier;
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

TEST(ExportSettings, EachKeyReachesItsField) {
    const struct {
        const char* key;
        JSON value;
        std::function<bool(const ExportSettings&)> arrived;
    } cases[] = {
        {"generateSyncClips", false, [](const auto& s) { return !s.generateSyncClips; }},
        {"audioBaseRole", "voice", [](const auto& s) { return s.audioBaseRole == "voice"; }},
        {"defaultSubrole8", "Spare", [](const auto& s) { return s.subroleMap.at(8) == "Spare"; }},
        {"videoResolution", "alternate",
         [](const auto& s) { return s.videoResolution == VideoResolutionMode::useAlternateFrameSize; }},
        {"videoResolution", "banana",
         [](const auto& s) { return s.videoResolution == VideoResolutionMode::useVideoFrameSize; }},
        {"spatialConform", "none",
         [](const auto& s) { return s.spatialConform == SpatialConformType::none; }},
        {"spatialConform", "banana",
         [](const auto& s) { return s.spatialConform == SpatialConformType::fill; }},
        {"trimMode", "none", [](const auto& s) { return s.trimMode == TrimMode::noTrim; }},
        {"trimMode", 7, [](const auto& s) { return s.trimMode == TrimMode::commonDuration; }},
        {"overrideAnamorphic", true, [](const auto& s) { return s.overrideAnamorphic; }},
        {"atmo.audioRole", "effects.air", [](const auto& s) { return s.atmoAudioRole == "effects.air"; }},
        {"atmo.duration", 60, [](const auto& s) { return s.atmoDurationSeconds == 60; }},
        {"atmo.duration", -1, [](const auto& s) { return s.atmoDurationSeconds == 180; }},
        {"offspeed.generateNativeMOS", true, [](const auto& s) { return s.generateNativeMOSForOffspeed; }},
        {"offspeed.suffix", "x", [](const auto& s) { return s.nativeMOSSuffix == "x"; }},
        {"offspeed.separateEvent", true, [](const auto& s) { return s.separateEventForNativeMOS; }},
        {"offspeed.eventName", "x", [](const auto& s) { return s.nativeMOSEventName == "x"; }},
        {"offspeed.wrapNativeMOSInSyncClip", true, [](const auto& s) { return s.wrapNativeMOSInSyncClip; }},
        {"offspeed.generateProjectRate", true,
         [](const auto& s) { return s.generateProjectRateForOffspeed; }},
        {"offspeed.projectRateSuffix", "x", [](const auto& s) { return s.projectRateSuffix == "x"; }},
        {"offspeed.projectRateSeparateEvent", true,
         [](const auto& s) { return s.separateEventForProjectRate; }},
        {"offspeed.projectRateEventName", "x", [](const auto& s) { return s.projectRateEventName == "x"; }},
        {"offspeed.autoKeyword", false, [](const auto& s) { return !s.offspeedAutoKeyword; }},
        {"notes.source", "audio", [](const auto& s) { return s.notesSource == NotesSource::audio; }},
        {"notes.source", "banana", [](const auto& s) { return s.notesSource == NotesSource::both; }},
        {"notes.videoPrefix", "Cam:", [](const auto& s) { return s.notesVideoPrefix == "Cam:"; }},
        {"notes.audioPrefix", "Snd:", [](const auto& s) { return s.notesAudioPrefix == "Snd:"; }},
        {"multicam.codec", "H.264", [](const auto& s) { return s.multicamCodec == MulticamCodec::h264; }},
        {"multicam.codec", "banana",
         [](const auto& s) { return s.multicamCodec == MulticamCodec::automatic; }},
        {"clipNamingSource", "video",
         [](const auto& s) { return s.clipNamingSource == GroupNaming::Source::video; }},
        {"customNamingPattern", "", [](const auto& s) { return s.customNamingPattern == ""; }},
        {"namingSeparator", "_", [](const auto& s) { return s.namingSeparator == "_"; }},
        {"export.experimentalVolumeKeyframes", true,
         [](const auto& s) { return s.experimentalVolumeKeyframes; }},
        {"export.wrapMOSInSyncClip", false, [](const auto& s) { return !s.wrapMOSInSyncClip; }},
        {"export.splitEventsByScene", true, [](const auto& s) { return s.splitEventsByScene; }},
        {"export.eventNamePattern", "x", [](const auto& s) { return s.eventNamePattern == "x"; }},
        {"export.generateRawMediaEvent", false, [](const auto& s) { return !s.generateRawMediaEvent; }},
        {"export.rawMediaEventName", "x", [](const auto& s) { return s.rawMediaEventName == "x"; }},
        {"project.targetFrameRate", 29.97,
         [](const auto& s) { return s.frameRate == 29.97 && s.projectFrameRate == 29.97; }},
        {"globalAudioOffset.frames", 12, [](const auto& s) { return s.globalAudioOffsetSeconds == 0.5; }},
        {"globalAudioOffset.frames", -6, [](const auto& s) { return s.globalAudioOffsetSeconds == -0.25; }},
    };
    for (const auto& c : cases) {
        platform::MemorySettingsStore store;
        registerStandardDefaults(store);
        store.set(c.key, c.value);
        EXPECT_TRUE(c.arrived(ExportSettings::fromUserDefaults(store, {}))) << c.key << c.value.dump();
    }
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
    const struct {
        const char* name;
        const MediaAsset* source;
        std::optional<int> anchor;
        const char* shape;
        int storedWidth, storedHeight;
        int outputWidth, outputHeight, width, height;
    } cases[] = {
        {"nothing known", nullptr, std::nullopt, "16:9", 0, 0, 1920, 1080, 1920, 1080},
        {"the video's width is the anchor", &uhd, std::nullopt, "2:1", 0, 0, 3840, 2160, 3840, 1920},
        {"the given anchor wins", &uhd, 2048, "2:1", 999, 999, 3840, 2160, 2048, 1024},
        {"the stored width is the last anchor", &unknown, std::nullopt, "1:1", 1000, 0, 1920, 1080, 1000,
         1000},
        {"pixels", &uhd, 2048, "custom", 1280, 720, 3840, 2160, 1280, 720},
        {"pixels that are none", &uhd, 2048, "custom", -5, 0, 3840, 2160, 1920, 1080},
        {"no such shape", &uhd, std::nullopt, "banana", 0, 0, 3840, 2160, 3840, 1080},
        {"an anchor that is none", &uhd, 0, "16:9", 0, 0, 3840, 2160, 1920, 1080},
    };
    for (const auto& c : cases) {
        platform::MemorySettingsStore store;
        store.set("container.aspectRatio", c.shape);
        store.set("alternateWidth", c.storedWidth);
        store.set("alternateHeight", c.storedHeight);
        ExportSettings::Request request;
        request.sourceVideo = c.source;
        request.aspectAnchorWidth = c.anchor;
        const ExportSettings s = ExportSettings::fromUserDefaults(store, request);
        EXPECT_EQ(s.outputWidth, c.outputWidth) << c.name;
        EXPECT_EQ(s.outputHeight, c.outputHeight) << c.name;
        EXPECT_EQ(s.alternateWidth, c.width) << c.name;
        EXPECT_EQ(s.alternateHeight, c.height) << c.name;
    }
}

TEST(ExportSettings, TheGlobalOffsetStartsWhereTheModeSays) {
    const struct {
        const char* mode;
        bool stored;
        std::optional<std::string> filename;
        std::optional<std::string> timecode;
    } cases[] = {
        {"all", true, std::nullopt, std::nullopt},        {"banana", true, std::nullopt, std::nullopt},
        {"fromFilename", true, "A002C010", std::nullopt}, {"fromTC", true, std::nullopt, "10:00:00:00"},
        {"fromTC", false, std::nullopt, std::nullopt},
    };
    for (const auto& c : cases) {
        platform::MemorySettingsStore store;
        store.set("globalAudioOffset.startMode", c.mode);
        if (c.stored) {
            store.set("globalAudioOffset.startFromFilename", "A002C010");
            store.set("globalAudioOffset.startFromTC", "10:00:00:00");
        }
        const ExportSettings s = ExportSettings::fromUserDefaults(store, {});
        EXPECT_EQ(s.globalAudioOffsetStartingFromFilename, c.filename) << c.mode;
        EXPECT_EQ(s.globalAudioOffsetStartingFromTC, c.timecode) << c.mode;
    }
}

} // namespace
} // namespace orvane
