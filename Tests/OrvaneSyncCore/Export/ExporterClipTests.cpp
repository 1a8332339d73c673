#include "OrvaneSyncCore/Export/ExportFixtures.h"
#include "OrvaneSyncCore/Services/Export/ExportClips.h"
#include "Support/Test.h"

namespace orvane {
namespace {

using namespace test;
using Lines = std::vector<std::string>;

TEST(ExporterClips, OneMatchedClip) {
    MediaAsset sound = recording(2);
    sound.ixmlData = ixml("12A", "003", {"Boom & Mix"});
    ExportSettings settings = settingsAt(25);
    settings.set(settings::eventName, "Day \"1\"");
    settings.set(settings::generateRawMediaEvent, true);
    expectGolden("matched", exported(matched(picture(), {sound}), settings));
}

TEST(ExporterClips, AClipWithoutSound) {
    expectGolden("mos", exported(matched(picture(), {}, MatchStatus::mos())));
}

MediaAsset& sound(SyncGroup& group) { return group.audioMatches[0].audio.edit(); }

/// The changes are made to a clip with two channels.
TEST(ExporterClips, EachChangeShows) {
    const auto trim = [](TrimMode mode, std::optional<double> video, std::optional<double> audio) {
        return [=](SyncGroup& group, ExportSettings& settings) {
            settings.set(settings::trimMode, mode);
            group.video.durationSeconds = video;
            sound(group).durationSeconds = audio;
        };
    };
    const auto rates = [](double own, double project) {
        return [=](SyncGroup& group, ExportSettings& settings) {
            group.video.projectFrameRate = own;
            settings.projectFrameRate = project;
        };
    };
    const auto gain = [](double dB) {
        return [=](SyncGroup& group, ExportSettings&) { group.masterGainDB = dB; };
    };
    const auto offsets = [](double manual, double global) {
        return [=](SyncGroup& group, ExportSettings& settings) {
            group.manualAudioOffsetSeconds = manual;
            settings.globalAudioOffsetSeconds = global;
        };
    };
    const auto from = [](const std::optional<std::string>& name, const std::optional<std::string>& timecode) {
        return [=](SyncGroup&, ExportSettings& settings) {
            settings.globalAudioOffsetSeconds = 0.08;
            settings.globalAudioOffsetStartingFromFilename = name;
            settings.globalAudioOffsetStartingFromTC = timecode;
        };
    };
    const auto channels = [](std::optional<int> count, const std::set<int>& byHand = {},
                             std::optional<int> best = {}) {
        return [=](SyncGroup& group, ExportSettings& settings) {
            sound(group).channelCount = count;
            group.manualActiveTracks = byHand;
            settings.smartAudioResults[group.id].bestTrackIndex = best;
        };
    };
    const auto files = [](const std::vector<int>& channelCounts) {
        return [=](SyncGroup& group, ExportSettings&) {
            group.audioMatches.clear();
            for (const int count : channelCounts)
                group.audioMatches.emplace_back(recording(count), -0.5, 20.0);
            group.manualAudioOffsetSeconds = 0.04;
        };
    };
    const auto notes = [](NotesSource source) {
        return [=](SyncGroup& group, ExportSettings& settings) {
            sound(group).ixmlData = ixml("", "3");
            sound(group).ixmlData->tape = "T01";
            settings.set(settings::notesSource, source);
            settings.set(settings::notesAudioPrefix, "Snd:");
        };
    };
    const auto offspeed = [](double sensor, bool keyword) {
        return [=](SyncGroup& group, ExportSettings& settings) {
            group.video.sensorFrameRate = sensor;
            settings.set(settings::offspeedAutoKeyword, keyword);
        };
    };
    using enum TrimMode;
    expectGoldenChanges(
        "clip-changes", matched(picture(), {recording(2)}), settingsAt(25),
        {
            {"the shorter file", trim(commonDuration, 60, 65)},
            {"the shorter is the sound", trim(commonDuration, 60, 5)},
            {"sound of unknown length", trim(commonDuration, 60, {})},
            {"the longer file", trim(noTrim, 60, 65)},
            {"the video", trim(videoDuration, 60, 5)},
            {"a video of unknown length", trim(videoDuration, {}, 5)},
            {"nothing to compare", trim(commonDuration, {}, 5)},
            {"the video's own rate goes first", rates(29.97, 25)},
            {"a rate of nothing counts as absent", rates(0, 50)},
            {"no timecode", [](auto& g, auto&) { g.video.startTimecodeString = std::nullopt; }},
            {"a gain", gain(-3.214)},
            {"a gain not worth it", gain(0.005)},
            {"a gain that is no number", gain(std::numeric_limits<double>::quiet_NaN())},
            {"letterbox", [](auto&, auto& s) { s.set(settings::spatialConform, SpatialConformType::fit); }},
            {"untouched", [](auto&, auto& s) { s.set(settings::spatialConform, SpatialConformType::none); }},
            {"a nudge of a frame", offsets(0.04, 0)},
            {"less than a frame", offsets(0.039, 0)},
            {"a nudge and the global offset", offsets(-0.08, 0.04)},
            {"a global offset", offsets(0, 0.08)},
            {"too little", offsets(0, 0.0001)},
            {"from this name on", from("A003C012_240517.mov", {})},
            {"from the beginning of this name on", from("A003C012", {})},
            {"from an earlier name on", from("A003C2", {})},
            {"from a later name on", from("A003C013", {})},
            {"from no name", from("", "")},
            {"from this timecode on", from({}, "10:00:00:00")},
            {"from a later timecode on", from({}, "10:00:00:01")},
            {"from no timecode", from({}, "soon")},
            {"six channels", channels(6)},
            {"a count that is unknown", channels({})},
            {"a count that is none", channels(-3)},
            {"the best track of the clip", channels(2, {}, 2)},
            {"the editor's choice goes before it", channels(3, {1, 3}, 2)},
            {"numbers run on through further files",
             [](auto& g, auto&) {
                 g.audioMatches.emplace_back(recording(2, "B.WAV"), 0, 1);
                 g.manualActiveTracks = {3};
             }},
            {"files of one channel and of two, nudged", files({1, 2})},
            {"of three, two and one", files({3, 2, 1})},
            {"names of the recorder, names of the settings, base role",
             [](auto& g, auto& s) {
                 sound(g).channelCount = 3;
                 sound(g).ixmlData = ixml("1", "2");
                 sound(g).ixmlData->tracks = {{3, "BOOM 2"}, {1, ""}};
                 s.set(settings::audioBaseRole, "effects");
                 s.subroleMap = {{1, "Main"}};
             }},
            {"the report's scene as it stands, and where its take is empty the recorder's",
             [](auto& g, auto&) {
                 sound(g).ixmlData = ixml("5", "6");
                 g.aleMetadata = {{"Scene", "12 "}, {"Take", ""}};
             }},
            {"notes of the sound", notes(NotesSource::both)},
            {"of the sound alone", notes(NotesSource::audio)},
            {"of the picture, which has none", notes(NotesSource::video)},
            {"no notes", notes(NotesSource::none)},
            {"slow motion", offspeed(120, true)},
            {"a rate with a fraction", offspeed(47.952, true)},
            {"slow motion without keywords", offspeed(120, false)},
            {"too close to be offspeed", offspeed(26, true)},
        });
}

TEST(ExporterAudio, EnhancementsGoToTheirRole) {
    SyncGroup group = matched(picture(), {recording(4)});
    ExportSettings settings = settingsAt(25);
    auto& tracks = settings.smartAudioResults[group.id].tracks;
    tracks.resize(4);
    for (int i = 0; i < 4; ++i) tracks[static_cast<std::size_t>(i)].trackIndex = i + 1;
    tracks[0].voiceIsolationAmount = 0.304F;
    tracks[0].loudnessAmount = 1.5F;
    tracks[0].loudnessUniformity = -0.1F;
    tracks[1].loudnessAmount = 0.5F;
    tracks[1].voiceIsolationAmount = 0.256F;
    tracks[2].loudnessUniformity = 0.9F;
    tracks[3].humReductionFrequency = 50;
    tracks[3].volumeGainDB = 3.0F;
    const std::string document = exported(group, settings);
    const auto from = document.find("<sync-source");
    EXPECT_EQ(document.substr(from, document.find("</sync-source") - from),
              R"(<sync-source sourceID="connected">
                    <audio-role-source role="dialogue.Mix">
                        <adjust-loudness amount="100" uniformity="0"/>
                        <adjust-voiceIsolation amount="30"/>
                    </audio-role-source>
                    <audio-role-source role="dialogue.Boom">
                        <adjust-loudness amount="50" uniformity="0"/>
                        <adjust-voiceIsolation amount="26"/>
                    </audio-role-source>
                    <audio-role-source role="dialogue.Lav 1"/>
                    <audio-role-source role="dialogue.Lav 2"/>
                )");

    // Two tracks of the same name: each has its own role and its own adjustments.
    group.audioMatches[0].audio.edit().channelCount = 2;
    group.audioMatches[0].audio.edit().ixmlData = ixml("1", "1", {"Anna", "Anna"});
    EXPECT_EQ(linesWith(exported(group, settings), "o-role-source role"),
              (Lines{"<audio-role-source role=\"dialogue.Anna\">",
                     "<audio-role-source role=\"dialogue.Anna 2\">"}));
    EXPECT_EQ(linesWith(exported(group, settings), "adjust-voiceIsolation"),
              (Lines{"<adjust-voiceIsolation amount=\"30\"/>", "<adjust-voiceIsolation amount=\"26\"/>"}));
}

TEST(ExporterNotes, PictureAndSoundShareTheField) {
    SyncGroup group = matched(picture(), {recording(2)});
    group.audioMatches[0].audio.edit().ixmlData = ixml("12", "3");
    ExportSettings settings;
    EXPECT_EQ(FCPXMLExporter::buildNotesString(group, settings, {"great take", "sync ok"}),
              "V: great take, sync ok | A: Scene 12, Take 3");
    settings.set(settings::notesSource, NotesSource::video);
    EXPECT_EQ(FCPXMLExporter::buildNotesString(group, settings, {"a"}), "V: a");
    EXPECT_EQ(FCPXMLExporter::buildNotesString(group, settings, {}), std::nullopt);
}

} // namespace
} // namespace orvane
