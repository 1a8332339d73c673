#include "OrvaneSyncCore/Models/SettingsCatalogue.h"
#include "OrvaneSyncCore/Services/Export/AspectRatioHelper.h"
#include "OrvaneSyncCore/Services/Export/ExportSettings.h"

#include "OrvaneSyncCore/Export/ExportFixtures.h"
#include "Support/Test.h"

#include <tuple>

namespace orvane {
namespace {

using platform::JSON;

TEST(AspectRatioHelper, HeightsAreEvenAndUnknownShapesHaveNone) {
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

TEST(ExportSettings, InvalidValuesAreReadAsTheDefault) {
    const auto check = [&](const char* key, const JSON& value,
                           const std::function<bool(const ExportSettings&)>& isRight) {
        platform::MemorySettingsStore store;
        registerStandardDefaults(store);
        store.setByName(key, value);
        EXPECT_TRUE(isRight(ExportSettings::fromUserDefaults(store, {}))) << key << value.dump();
    };
    check("videoResolution", "banana", [](const auto& s) {
        return s.get(settings::videoResolution) == VideoResolutionMode::useVideoFrameSize;
    });
    check("spatialConform", "banana",
          [](const auto& s) { return s.get(settings::spatialConform) == SpatialConformType::fill; });
    check("trimMode", 7, [](const auto& s) { return s.get(settings::trimMode) == TrimMode::commonDuration; });
    check("notes.source", "banana",
          [](const auto& s) { return s.get(settings::notesSource) == NotesSource::both; });
    check("multicam.codec", "banana",
          [](const auto& s) { return s.get(settings::multicamCodec) == MulticamCodec::automatic; });
    check("clipNamingSource", "banana",
          [](const auto& s) { return s.get(settings::clipNamingSource) == GroupNaming::Source::sceneTake; });
    check("atmo.duration", -1, [](const auto& s) { return s.atmoDurationSeconds == 180; });
    check("customNamingPattern", "", [](const auto& s) { return s.customNamingPattern == ""; });
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

TEST(ExportSettings, AnEmptyStoreGivesTheDefaultsThatAreRegistered) {
    platform::MemorySettingsStore empty, registered;
    registerStandardDefaults(registered);
    ExportSettings::Request request = oneOfEach();
    const auto document = [&](const platform::SettingsStore& store) {
        return FCPXMLExporter::exportDocument(request.groups, {},
                                              ExportSettings::fromUserDefaults(store, request))
            .fcpxmlString;
    };
    EXPECT_EQ(document(empty), document(registered));
    test::expectGolden("defaults", document(empty));
    EXPECT_EQ(ExportSettings::fromUserDefaults(empty, {}).projectFrameRate, 24);
}

/// Compares the derived values; stored values have their declared default in both.
TEST(ExportSettings, InitialValuesAreThoseOfAnEmptyStore) {
    const auto values = [](const ExportSettings& s) {
        return std::tie(s.frameRate, s.projectFrameRate, s.outputWidth, s.outputHeight, s.fcpxmlVersion,
                        s.defaultAudioTracks, s.alternateWidth, s.alternateHeight, s.atmoFileURL,
                        s.atmoDurationSeconds, s.metadataPrefix, s.globalAudioOffsetSeconds,
                        s.globalAudioOffsetStartingFromFilename, s.globalAudioOffsetStartingFromTC);
    };
    const ExportSettings untouched,
        read = ExportSettings::fromUserDefaults(platform::MemorySettingsStore(), {});
    EXPECT_TRUE(values(untouched) == values(read));
}

using StoredSetting = std::pair<std::string_view, JSON>;

/// Each choice, the other side of a switch, another number or text.
std::vector<StoredSetting> otherValues(const SettingDescription& setting) {
    using Kind = SettingDescription::Kind;
    std::vector<StoredSetting> values;
    for (const std::string_view choice : setting.choices) values.emplace_back(setting.key, choice);
    if (!values.empty()) return values;
    if (setting.kind == Kind::boolean) return {{setting.key, setting.defaultValue() != JSON(true)}};
    if (setting.kind == Kind::text) return {{setting.key, "Other"}};
    return {{setting.key, setting.defaultValue().number().value_or(0) + 1}};
}

TEST(ExportSettings, EachKeyChangesTheDocument) {
    using Settings = std::vector<StoredSetting>;
    const StoredSetting split{"export.splitEventsByScene", true}, native{"offspeed.generateNativeMOS", true},
        rate{"offspeed.generateProjectRate", true}, alternate{"videoResolution", "alternate"},
        pixels{"container.aspectRatio", "custom"}, frames{"globalAudioOffset.frames", 12};
    ExportSettings::Request request = oneOfEach();
    request.groups.update(request.groups.front().id,
                          [](SyncGroup& group) { group.lockitMetadata.emplace()["tags"] = "print"; });
    std::set<std::string, std::less<>> seen;
    const auto documentOf = [&](const Settings& values) {
        platform::MemorySettingsStore store;
        registerStandardDefaults(store);
        for (const auto& [key, value] : values) store.overrideByName(key, value);
        return FCPXMLExporter::exportDocument(request.groups, {},
                                              ExportSettings::fromUserDefaults(store, request))
            .fcpxmlString;
    };
    // `text`: stands in the document another number of times. `with`: without it the key has nothing to say.
    const auto check = [&](const std::string& key, const JSON& value, const std::string& text,
                           Settings with = {}) {
        const std::string before = documentOf(with);
        with.emplace_back(key, value);
        EXPECT_NE(test::countOf(documentOf(with), text), test::countOf(before, text)) << key;
        seen.insert(key);
    };
    check("project.targetFrameRate", 50, "id=\"r1\" frameDuration=\"1/50s\"");
    check("clipNamingSource", "video", "name=\"12A-3");
    check("customNamingPattern", "{take} of {scene}", "3 of 12A", {{"clipNamingSource", "custom"}});
    check("namingSeparator", "_", "12A_3");
    check("videoResolution", "alternate", "height=\"1920\" colorSpace", {{"container.aspectRatio", "2:1"}});
    check("container.aspectRatio", "1:1", "height=\"3840\" colorSpace", {alternate});
    check("alternateWidth", 1998, "width=\"1998\"", {alternate, pixels});
    check("alternateHeight", 858, "height=\"858\"", {alternate, pixels});
    check("notes.audioPrefix", "Snd:", "\"Snd: Scene 12A");
    check("export.eventNamePattern", "S{scene}", "event name=\"S12A\"", {split});
    check("export.volumeKeyframes", true, "<keyframe ");
    check("export.experimentalVolumeKeyframes", true, "<keyframe ");
    check("export.volumeKeyframes", false, "<keyframe ", {{"export.experimentalVolumeKeyframes", true}});
    check("export.rawMediaEventName", "Bin", "event name=\"Bin\"");
    check("offspeed.suffix", "_{fps}", "name=\"C001C003_125\"", {native});
    check("offspeed.separateEvent", true, "event name=\"Native MOS\"", {native});
    check("offspeed.eventName", "Own", "event name=\"Own\"", {native, {"offspeed.separateEvent", true}});
    check("offspeed.wrapNativeMOSInSyncClip", true, "<sync-clip", {native});
    check("offspeed.projectRateSuffix", "-{fps}p", "name=\"C001C003-25p\"", {rate});
    check("offspeed.projectRateSeparateEvent", true, "event name=\"Project Rate\"", {rate});
    check("offspeed.projectRateEventName", "Own", "event name=\"Own\"",
          {rate, {"offspeed.projectRateSeparateEvent", true}});
    check("lockit.fieldMapping.v1", JSON::Object{{"tags", "keyword"}}, "keyword value=\"print\"");
    check("lockit.fieldMapping.customKeys.v1", JSON::Object{{"tags", "k"}}, "key=\"k\"",
          {{"lockit.fieldMapping.v1", JSON::Object{{"tags", "custom"}}}});
    check("audioBaseRole", "voice", "role=\"voice.Mix\"");
    check("globalAudioOffset.frames", 12, "offset=\"1799999/50s\"");
    check("globalAudioOffset.startMode", "fromFilename", "offset=\"1799999/50s\"",
          {frames, {"globalAudioOffset.startFromFilename", "D001"}});
    check("globalAudioOffset.startFromFilename", "D001", "offset=\"1799999/50s\"",
          {frames, {"globalAudioOffset.startMode", "fromFilename"}});
    check("globalAudioOffset.startFromTC", "11:00:00:00", "offset=\"1799999/50s\"",
          {frames, {"globalAudioOffset.startMode", "fromTC"}});
    check("atmo.duration", 61, "duration=\"61s\"");
    check("atmo.audioRole", "effects.air", "audioRole=\"effects.air\"");
    for (int track = 1; track <= 8; ++track)
        check("defaultSubrole" + std::to_string(track), "Spare", "role=\"dialogue.Spare\"");

    // Keys that the caller reads, that have no effect by design, or that concern metadata or room tone which
    // are passed separately.
    seen.insert(
        {"eventName", "generateMulticam", "overrideAnamorphic", "notes.videoPrefix", "atmo.includeInExport"});
    const std::set<std::string_view> others{"Reports",  "Smart Audio", "Playback",   "Linear timecode",
                                            "Matching", "Caches",      "Calibration"};
    // Of all others: another value changes the document, as the rest stands or with another switch of the
    // family turned.
    for (const SettingDescription& setting : SettingsCatalogue::all()) {
        if (others.contains(setting.family) || seen.contains(setting.key)) continue;
        std::vector<Settings> with{{}};
        for (const SettingDescription& other : SettingsCatalogue::all())
            if (other.family == setting.family && other.kind == SettingDescription::Kind::boolean)
                with.push_back({otherValues(other).front()});
        EXPECT_TRUE(std::ranges::any_of(with,
                                        [&](const Settings& switched) {
                                            const std::string before = documentOf(switched);
                                            return std::ranges::any_of(
                                                otherValues(setting), [&](const auto& value) {
                                                    Settings changed = switched;
                                                    changed.push_back(value);
                                                    return documentOf(changed) != before;
                                                });
                                        }))
            << setting.key << " does nothing";
    }
}

TEST(ExportSettings, ArgumentsOverrideTheStore) {
    platform::MemorySettingsStore store;
    store.setByName("atmo.audioRole", "effects.air");
    store.setByName("atmo.duration", 60);
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
    EXPECT_EQ(settings.get(settings::eventName), "Day 3");
    EXPECT_FALSE(settings.get(settings::generateMulticam));
    EXPECT_EQ(settings.projectFrameRate, 25) << "the clips vote";
    EXPECT_EQ(settings.smartAudioResults.size(), 1U);
    EXPECT_EQ(settings.atmoFileURL, FileURL{"/media/atmo.wav"});
    EXPECT_EQ(settings.get(settings::atmoAudioRole), "effects.sea");
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
        store.setByName("container.aspectRatio", shape);
        store.setByName("alternateWidth", storedWidth);
        store.setByName("alternateHeight", storedHeight);
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
        store.setByName("globalAudioOffset.startMode", mode);
        if (stored) {
            store.setByName("globalAudioOffset.startFromFilename", "A002C010");
            store.setByName("globalAudioOffset.startFromTC", "10:00:00:00");
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
