#include "OrvaneSyncCore/Services/Export/FCPXMLExporterStages.h"

#include "OrvaneSyncCore/Export/ExportFixtures.h"
#include "Support/Test.h"

namespace orvane {
namespace {

using namespace test;
using Lines = std::vector<std::string>;

ExportResult run(const SyncGroupList& groups, const ExportSettings& settings = settingsAt(25),
                 const std::vector<WildTrack>& wildTracks = {}) {
    return FCPXMLExporter::exportDocument(groups, wildTracks, settings);
}

Lines attributesOf(const std::string& document, const std::string& where, const std::string& name) {
    Lines values;
    for (const std::string& line : linesWith(document, where)) values.push_back(attributeOf(line, name));
    return values;
}

SyncGroup sceneClip(const std::string& name, const std::optional<std::string>& scene) {
    MediaAsset sound = recording(1);
    sound.ixmlData = ixml(scene.value_or(""), "");
    SyncGroup group = matched(picture(name + ".mov"), {sound});
    group.manualClipName = name;
    return group;
}

TEST(ExporterDriver, NothingToExportIsAnError) {
    SyncGroup group = matched(picture(), {recording(2)});
    group.isExcludedFromExport = true;
    for (const SyncGroupList& groups : {SyncGroupList{}, SyncGroupList{group}}) {
        try {
            run(groups);
            FAIL() << "no error";
        } catch (const ExportError& error) {
            EXPECT_EQ(error.kind(), ExportError::Kind::noGroups);
            EXPECT_STREQ(error.what(), "No sync groups to export");
        }
    }
}

TEST(ExporterDriver, IdentifiersAreNumberedAndFormatsPrecedeTheirAssets) {
    SyncGroup excluded = matched(picture("X.mov"), {recording(2)});
    excluded.isExcludedFromExport = true;
    const ExportResult result =
        run({matched(picture("A.mov"), {recording(2), recording(1)}), excluded,
             matched(picture("U.mov"), {recording(2)}, MatchStatus::unmatched()),
             matched(picture("M.mov"), {}, MatchStatus::mos()), matched(picture("B.mov"), {recording(2)})});
    Lines ids;
    for (const std::string& line : linesWith(result.fcpxmlString, " id=\""))
        ids.push_back(attributeOf(line, "id"));
    EXPECT_EQ(ids, (Lines{"r1", "r2", "r4", "r3", "r5", "r6", "r8", "r7", "r10", "r9", "r11", "r12"}))
        << "the unmatched clip takes none, nothing is shared, the multicam clip comes behind";
    EXPECT_EQ(result.syncClipCount, 3);
    EXPECT_EQ(result.multicamCount, 1);
    EXPECT_EQ(result.warnings, Lines{"Skipped (not matched): U.mov"});
}

TEST(ExporterDriver, AssetsStateWhatIsKnownAboutTheirFiles) {
    SyncGroup group = matched(MediaAsset(FileURL{"/media/Bare.MOV"}, AssetKind::video),
                              {MediaAsset(FileURL{"/media/Sound.Take.WAV"}, AssetKind::audio)});
    expectGolden("bare-files", exported(group));
    group.video.frameRate = 23.976;
    group.video.startTimecodeString = "00:00:01:00";
    group.audioMatches[0].audio.edit().sampleRate = 44100.7;
    group.audioMatches[0].audio.edit().durationSeconds = 1;
    ExportSettings old = settingsAt(25);
    old.fcpxmlVersion = fcpxml::FCPXMLVersion::v1_8;
    expectGolden("files-of-version-8", exported(group, old));
}

TEST(ExporterDriver, EachStatusHasItsPath) {
    const auto check = [&](const char* name, const MatchStatus& status, bool sound, bool wrap,
                           std::optional<double> duration, int clips, const Lines& warnings) {
        SyncGroup group = matched(picture("V.mov"), {}, status);
        if (sound) group.audioMatches.emplace_back(recording(2), 0, 1);
        group.video.durationSeconds = duration;
        ExportSettings settings = settingsAt(25);
        settings.set(settings::wrapMOSInSyncClip, wrap);
        const ExportResult result = run({group}, settings);
        EXPECT_EQ(result.syncClipCount, clips) << name;
        EXPECT_EQ(countOf(result.fcpxmlString, "<sync-clip"), static_cast<std::size_t>(clips)) << name;
        EXPECT_EQ(result.warnings, warnings) << name;
    };
    check("matched", MatchStatus::matched(), true, true, 20, 1, {});
    check("split", MatchStatus::splitRecording(2), true, true, 20, 1, {});
    check("manual", MatchStatus::manual(), true, true, 20, 1, {});
    check("ambiguous", MatchStatus::ambiguous(2), true, true, 20, 0, {"Skipped (not matched): V.mov"});
    check("unmatched with sound", MatchStatus::unmatched(), true, true, 20, 0,
          {"Skipped (not matched): V.mov"});
    check("unmatched without", MatchStatus::unmatched(), false, true, 20, 1, {});
    check("mos", MatchStatus::mos(), false, true, 20, 1, {});
    check("mos of no length", MatchStatus::mos(), false, true, std::nullopt, 0, {"MOS (no audio): V.mov"});
    check("mos not wanted", MatchStatus::mos(), false, false, 20, 0, {"MOS (no audio): V.mov"});
}

TEST(ExporterDriver, AForeignRateIsReportedAndExported) {
    const std::string text = "Project rate mismatch: A003C012_240517.mov is ";
    const auto check = [&](double own, double project, const MatchStatus& status, const Lines& warnings) {
        SyncGroup group = matched(picture(), {recording(2)}, status);
        group.video.projectFrameRate = own;
        EXPECT_EQ(run({group}, settingsAt(project)).warnings, warnings) << own;
    };
    check(25.4, 25, MatchStatus::matched(), {});
    check(25.6, 25, MatchStatus::matched(), {text + "25.6 fps, project is 25 fps"});
    check(23.976, 29.97, MatchStatus::manual(), {text + "24 fps, project is 30 fps"});
    check(0, 25, MatchStatus::matched(), {});
    check(std::numeric_limits<double>::quiet_NaN(), 25, MatchStatus::matched(), {});
    check(50, 25, MatchStatus::ambiguous(2), {"Skipped (not matched): A003C012_240517.mov"});
}

TEST(ExporterDriver, NumbersThatADocumentCannotHoldBreakNothing) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const double rate :
         {0.0, -24.0, 1e-300, 1e300, infinity, std::numeric_limits<double>::quiet_NaN()}) {
        SyncGroup group = matched(picture(), {recording(2)});
        group.video.frameRate = group.video.projectFrameRate = group.video.sensorFrameRate = rate;
        group.video.durationSeconds = rate;
        group.manualAudioOffsetSeconds = group.masterGainDB = rate;
        auto& sound = group.audioMatches[0].audio.edit();
        sound.sampleRate = sound.frameRate = sound.durationSeconds = rate;
        ExportSettings settings = settingsAt(rate);
        settings.globalAudioOffsetSeconds = settings.atmoDurationSeconds = rate;
        settings.atmoFileURL = FileURL{"/media/atmo.wav"};
        auto& track = settings.smartAudioResults[group.id].tracks.emplace_back();
        track.trackIndex = 1;
        track.voiceIsolationAmount = static_cast<float>(rate);
        const std::string document = run({group}, settings).fcpxmlString;
        EXPECT_EQ(countOf(document, "<sync-clip"), 1U) << rate;
        EXPECT_EQ(countOf(document, "/0s\""), 0U) << rate;
        EXPECT_EQ(attributeOf(linesWith(document, "id=\"r1\"").front(), "frameDuration"), "1/24s") << rate;
    }
}

TEST(ExporterNames, FollowTheSourceTheCameraAndThePickup) {
    const auto take = [](const std::string& file, const char* scene, const char* number) {
        MediaAsset sound = recording(1, "MIX.WAV");
        sound.ixmlData = ixml(scene, number);
        return matched(picture(file), {sound});
    };
    SyncGroup manual = take("A001C004.mov", "7", "1");
    manual.manualClipName = " Hero ";
    manual.isPickup = true;
    SyncGroup alone = take("C001C001.mov", "5", "2");
    alone.isExcludedFromMulticamFlag = true;
    SyncGroup slow = matched(picture("clip.mov"), {}, MatchStatus::mos());
    slow.video.sensorFrameRate = 120;
    const SyncGroupList groups{take("A001C001_x.mov", "5", "02"),
                               take("B001C001.mov", "5", "2"),
                               take("clip7.mov", "5", "2"),
                               alone,
                               take("A001C003.mov", "6", "1"),
                               manual,
                               slow};
    const auto names = [&](ExportSettings settings) {
        settings.set(settings::namingSeparator, "_");
        settings.set(settings::generateMulticam, false);
        return attributesOf(run(groups, settings).fcpxmlString, "<sync-clip", "name");
    };
    ExportSettings settings = settingsAt(25);
    EXPECT_EQ(names(settings),
              (Lines{"5_2 Cam A", "5_2 Cam B", "5_2", "5_2", "6_1", "Hero PU", "clip 120fps"}));
    settings.set(settings::clipNamingSource, GroupNaming::Source::audio);
    EXPECT_EQ(names(settings),
              (Lines{"MIX Cam A", "MIX Cam B", "MIX", "MIX", "MIX Cam A", "Hero Cam A PU", "clip 120fps"}));
    settings.set(settings::clipNamingSource, GroupNaming::Source::custom);
    settings.customNamingPattern = "{scene}x{take}";
    EXPECT_EQ(names(settings).front(), "5x2 Cam A");
    settings.customNamingPattern = "";
    EXPECT_EQ(names(settings)[4], "6_1");
    // A renamed camera has its new name in the name of the clip that holds several cameras.
    SyncGroup renamed = groups[0];
    renamed.manualClipName = "Wide";
    const auto beside =
        attributesOf(run({renamed, groups[1]}, settingsAt(25)).fcpxmlString, "<mc-clip", "name");
    EXPECT_EQ(beside, Lines{"Wide Cam A + 5-2 Cam B"});
}

TEST(ExporterEvents, ScenesInTheirOrderThenTheRest) {
    ExportSettings settings = settingsAt(25);
    settings.set(settings::eventName, "Day 1");
    settings.set(settings::generateMulticam, false);
    settings.atmoFileURL = FileURL{"/media/atmo.wav"};
    WildTrack approved(recording(1, "wild.wav"), "Wind"), hidden(recording(1, "hidden.wav"));
    approved.isApproved = true;
    SyncGroup reported = sceneClip("e", "99");
    reported.aleMetadata = std::map<std::string, std::string>{{"Scene", " 2 "}};
    const SyncGroupList groups{sceneClip("a", "10"),
                               sceneClip("b", std::nullopt),
                               sceneClip("c", "2"),
                               sceneClip("d", "10"),
                               reported,
                               sceneClip("f", "  ")};
    EXPECT_EQ(eventsOf(run(groups, settings, {approved, hidden}).fcpxmlString),
              "Day 1: a; b; c; d; e; f; atmo; Wind;");

    settings.set(settings::splitEventsByScene, true);
    EXPECT_EQ(eventsOf(run(groups, settings, {approved, hidden}).fcpxmlString),
              "Day 1 002: c; e; | Day 1 010: a; d; | Day 1: b; f; atmo; Wind;");
    settings.set(settings::eventNamePattern, "S{scene}");
    settings.atmoFileURL = std::nullopt;
    EXPECT_EQ(eventsOf(run({groups[0], groups[2]}, settings).fcpxmlString), "S2: c; | S10: a;")
        << "numbers in names count by value, and an event without clips is not made";
    settings.set(settings::generateSyncClips, false);
    EXPECT_EQ(eventsOf(run(groups, settings).fcpxmlString), "Day 1:") << "never without an event";
}

TEST(ExporterDriver, ClipsLeftOutOfEventsAreNotCounted) {
    ExportSettings settings = settingsAt(25);
    settings.set(settings::generateSyncClips, false);
    const ExportResult result = run(
        {matched(picture(), {recording(2)}), matched(picture("M.mov"), {}, MatchStatus::mos())}, settings);
    EXPECT_EQ(result.syncClipCount, 1);
    EXPECT_EQ(attributesOf(result.fcpxmlString, "<sync-clip", "name"), Lines{"M"});
    EXPECT_EQ(countOf(result.fcpxmlString, "<asset id"), 3U) << "the resources are there all the same";
}

TEST(ExporterDriver, RoomToneAndWildTracks) {
    ExportSettings settings = settingsAt(29.97);
    settings.atmoFileURL = FileURL{"/media/Day 1=Atmo.wav"};
    settings.atmoDurationSeconds = 10.00001;
    WildTrack wild(recording(2, "wind.wav"), "Wind & Rain");
    wild.isApproved = true;
    WildTrack bare(MediaAsset(FileURL{"/media/bare.wav"}, AssetKind::audio));
    bare.isApproved = true;
    expectGolden(
        "room-tone",
        run({matched(picture("M.mov"), {}, MatchStatus::mos())}, settings, {wild, bare}).fcpxmlString);
}

TEST(ExporterDriver, EditableItemsGetTheirType) {
    const auto check = [&](const std::string& before, const std::string& after) {
        std::string text = before;
        FCPXMLExporter::giveEditableItemsTheirType(text);
        EXPECT_EQ(text, after);
    };
    check("", "");
    check("<md key=\"k\"/>", "<md key=\"k\"/>");
    check("editable=\"1\"", "editable=\"1\" type=\"string\"");
    check(
        "a editable=\"1\" b editable=\"1\"editable=\"1\" c",
        "a editable=\"1\" type=\"string\" b editable=\"1\" type=\"string\"editable=\"1\" type=\"string\" c");
    check("editable=\"0\" editable=\"11\"", "editable=\"0\" editable=\"11\"");
}

} // namespace
} // namespace orvane
