#include "OrvaneSyncCore/Export/ExportFixtures.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace orvane {
namespace {

using namespace test;
using Lines = std::vector<std::string>;

TEST(ExporterClips, OneMatchedClip) {
    MediaAsset sound = recording(2);
    sound.ixmlData = ixml("12A", "003", {"Boom & Mix"});
    ExportSettings settings = settingsAt(25);
    settings.eventName = "Day \"1\"";
    settings.generateRawMediaEvent = true;
    expectGolden("matched", exported(matched(picture(), {sound}), settings));
}

TEST(ExporterClips, AClipWithoutSound) {
    expectGolden("mos", exported(matched(picture(), {}, MatchStatus::mos())));
}

/// To a clip with two channels.
void expect(const std::vector<Change>& changes) {
    test::expect(changes, matched(picture(), {recording(2)}), settingsAt(25));
}

std::string syncClip(const std::string& start, const std::string& duration, const char* format = "NDF") {
    return "<sync-clip offset=\"" + start + "\" name=\"A003C012_240517\" start=\"" + start +
           "\" duration=\"" + duration + "\" format=\"r1\" tcFormat=\"" + format + "\">";
}

TEST(ExporterClips, PositionDurationAndGain) {
    const auto trim = [](TrimMode mode, std::optional<double> video, std::optional<double> audio) {
        return [=](SyncGroup& group, ExportSettings& settings) {
            settings.trimMode = mode;
            group.video.durationSeconds = video;
            group.audioMatches[0].audio.edit().durationSeconds = audio;
        };
    };
    using enum TrimMode;
    expect({
        {"the shorter file", trim(commonDuration, 60, 65), "<sync-clip", {syncClip("36000s", "60s")}},
        {"the shorter is the sound", trim(commonDuration, 60, 5), "<sync-clip", {syncClip("36000s", "5s")}},
        {"sound of unknown length", trim(commonDuration, 60, {}), "<sync-clip", {syncClip("36000s", "60s")}},
        {"the longer file", trim(noTrim, 60, 65), "<sync-clip", {syncClip("36000s", "65s")}},
        {"the video", trim(videoDuration, 60, 5), "<sync-clip", {syncClip("36000s", "60s")}},
        {"a video of unknown length", trim(videoDuration, {}, 5), "<sync-clip", {syncClip("36000s", "40s")}},
        {"nothing to compare", trim(commonDuration, {}, 5), "<sync-clip", {syncClip("36000s", "40s")}},
        {"the video's own rate goes first",
         [](auto& g, auto& s) {
             g.video.projectFrameRate = 29.97;
             s.projectFrameRate = 25;
         },
         "<sync-clip",
         {syncClip("539998459/15000s", "599599/30000s", "DF")}},
        {"a rate of nothing counts as absent",
         [](auto& g, auto& s) {
             g.video.projectFrameRate = 0;
             s.projectFrameRate = 50;
         },
         "<sync-clip",
         {syncClip("36000s", "20s")}},
        {"no timecode",
         [](auto& g, auto&) { g.video.startTimecodeString = std::nullopt; },
         "<sync-clip",
         {syncClip("0s", "20s")}},
        {"a gain",
         [](auto& g, auto&) { g.masterGainDB = -3.214; },
         "adjust-volume",
         {"<adjust-volume amount=\"-3.21dB\"/>"}},
        {"a gain not worth it", [](auto& g, auto&) { g.masterGainDB = 0.005; }, "adjust-volume", {}},
        {"a gain that is no number",
         [](auto& g, auto&) { g.masterGainDB = std::numeric_limits<double>::quiet_NaN(); },
         "adjust-volume",
         {}},
        {"letterbox",
         [](auto&, auto& s) { s.spatialConform = SpatialConformType::fit; },
         "adjust-conform",
         {"<adjust-conform/>"}},
        {"untouched",
         [](auto&, auto& s) { s.spatialConform = SpatialConformType::none; },
         "adjust-conform",
         {"<adjust-conform type=\"none\"/>"}},
    });
}

TEST(ExporterClips, OffsetsSlideTheSoundAndNothingElse) {
    const auto clipAt = [](const char* offset) {
        return Lines{std::string("<clip lane=\"-1\" offset=\"") + offset +
                     "\" name=\"MIX_012.WAV\" start=\"71999/2s\" duration=\"30s\" format=\"r2\" "
                     "tcFormat=\"NDF\">"};
    };
    const auto global = [](double seconds, const char* fromName, const char* fromTC) {
        return [=](SyncGroup&, ExportSettings& settings) {
            settings.globalAudioOffsetSeconds = seconds;
            if (fromName != nullptr) settings.globalAudioOffsetStartingFromFilename = fromName;
            if (fromTC != nullptr) settings.globalAudioOffsetStartingFromTC = fromTC;
        };
    };
    const char *plain = "71999/2s", *moved = "1799979/50s";
    expect({
        {"a nudge of a frame", [](auto& g, auto&) { g.manualAudioOffsetSeconds = 0.04; }, "<clip ",
         clipAt("1799977/50s")},
        {"less than a frame", [](auto& g, auto&) { g.manualAudioOffsetSeconds = 0.039; }, "<clip ",
         clipAt(plain)},
        {"a nudge and the global offset",
         [](auto& g, auto& s) {
             g.manualAudioOffsetSeconds = -0.08;
             s.globalAudioOffsetSeconds = 0.04;
         },
         "<clip ", clipAt("1799973/50s")},
        {"everywhere", global(0.08, nullptr, nullptr), "<clip ", clipAt(moved)},
        {"too little", global(0.0001, nullptr, nullptr), "<clip ", clipAt(plain)},
        {"from this name on", global(0.08, "A003C012", nullptr), "<clip ", clipAt(moved)},
        {"from an earlier name on", global(0.08, "A003C2", nullptr), "<clip ", clipAt(moved)},
        {"from a later name on", global(0.08, "A003C013", nullptr), "<clip ", clipAt(plain)},
        {"from no name", global(0.08, "", ""), "<clip ", clipAt(moved)},
        {"from this timecode on", global(0.08, nullptr, "10:00:00:00"), "<clip ", clipAt(moved)},
        {"from a later timecode on", global(0.08, nullptr, "10:00:00:01"), "<clip ", clipAt(plain)},
        {"from no timecode", global(0.08, nullptr, "soon"), "<clip ", clipAt(moved)},
    });
}

Lines rolesOf(const std::string& document) {
    Lines roles;
    for (const std::string& line : linesWith(document, "<audio-role-source")) {
        const auto at = line.find("role=\"") + 6;
        roles.push_back(line.substr(at, line.find('"', at) - at) +
                        (line.find("active=\"0\"") == std::string::npos ? "" : " off"));
    }
    return roles;
}

TEST(ExporterAudio, RolesAndWhoIsHeard) {
    const auto best = [](SyncGroup& group, ExportSettings& settings, std::optional<int> track) {
        settings.smartAudioResults[group.id].bestTrackIndex = track;
    };
    const std::vector<Change> changes = {
        {"by number", [](auto&, auto&) {}, "", {"dialogue.Mix", "dialogue.Boom"}},
        {"six channels",
         [](auto& g, auto&) { g.audioMatches[0].audio.edit().channelCount = 6; },
         "",
         {"dialogue.Mix", "dialogue.Boom", "dialogue.Lav 1", "dialogue.Lav 2", "dialogue.Lav 3",
          "dialogue.Lav 4"}},
        {"a count that is unknown",
         [](auto& g, auto&) { g.audioMatches[0].audio.edit().channelCount = {}; },
         "",
         {"dialogue.Mix", "dialogue.Boom"}},
        {"a count that is none",
         [](auto& g, auto&) { g.audioMatches[0].audio.edit().channelCount = -3; },
         "",
         {"dialogue.Mix"}},
        {"names of the recorder, names of the settings, base role",
         [](auto& g, auto& s) {
             g.audioMatches[0].audio.edit().channelCount = 3;
             g.audioMatches[0].audio.edit().ixmlData = ixml("1", "2");
             g.audioMatches[0].audio.edit().ixmlData->tracks = {{3, "BOOM 2"}, {1, ""}};
             s.audioBaseRole = "effects";
             s.subroleMap = {{1, "Main"}};
         },
         "",
         {"effects.Main", "effects.Boom", "effects.BOOM 2"}},
        {"the best track of the clip",
         [&](auto& g, auto& s) { best(g, s, 2); },
         "",
         {"dialogue.Mix off", "dialogue.Boom"}},
        {"no best track",
         [&](auto& g, auto& s) { best(g, s, std::nullopt); },
         "",
         {"dialogue.Mix", "dialogue.Boom"}},
        {"the editor's choice wins",
         [&](auto& g, auto& s) {
             best(g, s, 2);
             g.audioMatches[0].audio.edit().channelCount = 3;
             g.manualActiveTracks = {1, 3};
         },
         "",
         {"dialogue.Mix", "dialogue.Boom off", "dialogue.Lav 1"}},
        {"numbers run on through further files",
         [&](auto& g, auto&) {
             g.audioMatches.emplace_back(recording(2, "B.WAV"), 0, 1);
             g.manualActiveTracks = {3};
         },
         "",
         {"dialogue.Mix off", "dialogue.Boom off", "dialogue.Mix", "dialogue.Boom off"}},
    };
    for (const Change& change : changes) {
        SyncGroup group = matched(picture(), {recording(2)});
        ExportSettings settings = settingsAt(25);
        change.apply(group, settings);
        EXPECT_EQ(rolesOf(exported(group, settings)), change.lines) << change.name;
    }
}

TEST(ExporterAudio, FurtherFilesHangBelowOnLanesOfTheirOwn) {
    const struct {
        std::vector<int> channels;
        Lines lanes; ///< of the audio elements in document order, "-" for none
    } cases[] = {
        {{1}, {"-"}},
        {{3}, {"-", "-1", "-2"}},
        {{1, 2}, {"-1", "-2", "-"}},
        {{3, 2, 1}, {"-3", "-4", "-5", "-", "-1", "-2"}},
    };
    for (const auto& c : cases) {
        std::vector<MediaAsset> files;
        for (const int channels : c.channels) files.push_back(recording(channels));
        SyncGroup group = matched(picture(), files);
        group.manualAudioOffsetSeconds = 0.04;
        const std::string document = exported(group);
        Lines lanes;
        for (const std::string& line : linesWith(document, "<audio ")) {
            const auto at = line.find("lane=\"");
            lanes.push_back(at == std::string::npos ? "-"
                                                    : line.substr(at + 6, line.find('"', at + 6) - at - 6));
            EXPECT_NE(line.find("offset=\"71999/2s\" start=\"71999/2s\""), std::string::npos)
                << "the offset moves the first file's clip alone";
        }
        EXPECT_EQ(lanes, c.lanes) << c.channels.size() << " files";
        EXPECT_EQ(countOf(document, "<clip "), 1U);
    }
}

TEST(ExporterAudio, EnhancementsGoToTheirRole) {
    SyncGroup group = matched(picture(), {recording(4)});
    ExportSettings settings = settingsAt(25);
    auto& tracks = settings.smartAudioResults[group.id].tracks;
    tracks.resize(4);
    for (int i = 0; i < 4; ++i) tracks[static_cast<std::size_t>(i)].trackIndex = i + 1;
    tracks[0].voiceIsolationAmount = 0.304F;
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
                        <adjust-voiceIsolation amount="0.3"/>
                    </audio-role-source>
                    <audio-role-source role="dialogue.Boom">
                        <adjust-loudness amount="0.5" uniformity="0"/>
                        <adjust-voiceIsolation amount="0.26"/>
                    </audio-role-source>
                    <audio-role-source role="dialogue.Lav 1"/>
                    <audio-role-source role="dialogue.Lav 2"/>
                )");

    // Two tracks under one name: the later one counts, for both.
    group.audioMatches[0].audio.edit().channelCount = 2;
    group.audioMatches[0].audio.edit().ixmlData = ixml("1", "1", {"Anna", "Anna"});
    EXPECT_EQ(linesWith(exported(group, settings), "adjust-voiceIsolation"),
              Lines(2, "<adjust-voiceIsolation amount=\"0.26\"/>"));
}

TEST(ExporterClips, MetadataAndKeywords) {
    const auto report = [](SyncGroup& group, ExportSettings&) {
        group.audioMatches[0].audio.edit().ixmlData = ixml("5", "6");
        group.aleMetadata = {{"Scene", "12 "}, {"Take", ""}};
    };
    const auto notes = [](NotesSource source) {
        return [=](SyncGroup& group, ExportSettings& settings) {
            group.audioMatches[0].audio.edit().ixmlData = ixml("", "3");
            group.audioMatches[0].audio.edit().ixmlData->tape = "T01";
            settings.notesSource = source;
            settings.notesAudioPrefix = "Snd:";
        };
    };
    const auto offspeed = [](double sensor, bool keyword) {
        return [=](SyncGroup& group, ExportSettings& settings) {
            group.video.sensorFrameRate = sensor;
            settings.offspeedAutoKeyword = keyword;
        };
    };
    const std::string note =
        "<md key=\"com.apple.proapps.metadataField.note\" value=\"Snd: Take 3, Tape T01\"/>";
    const std::string synced = "<keyword value=\"Synced\"/>", other = "<keyword value=\"Offspeed\"/>";
    expect({
        {"the report's scene as it stands",
         report,
         "studio.scene",
         {"<md key=\"com.apple.proapps.studio.scene\" value=\"12 \"/>"}},
        {"an empty column gives way to the recorder",
         report,
         "studio.shot",
         {"<md key=\"com.apple.proapps.studio.shot\" value=\"6\"/>"}},
        {"no scene, no item", [](auto&, auto&) {}, "studio.scene", {}},
        {"notes of the sound", notes(NotesSource::both), "Field.note", {note}},
        {"of the sound alone", notes(NotesSource::audio), "Field.note", {note}},
        {"of the picture, which has none", notes(NotesSource::video), "Field.note", {}},
        {"no notes", notes(NotesSource::none), "Field.note", {}},
        {"slow motion",
         offspeed(120, true),
         "<keyword",
         {synced, other, "<keyword value=\"Offspeed 120fps\"/>"}},
        {"a rate with a fraction",
         offspeed(47.952, true),
         "<keyword",
         {synced, other, "<keyword value=\"Offspeed 48fps\"/>"}},
        {"not wanted", offspeed(120, false), "<keyword", {synced}},
        {"too close to be offspeed", offspeed(26, true), "<keyword", {synced}},
    });
}

TEST(ExporterNotes, PictureAndSoundShareTheField) {
    SyncGroup group = matched(picture(), {recording(2)});
    group.audioMatches[0].audio.edit().ixmlData = ixml("12", "3");
    ExportSettings settings;
    EXPECT_EQ(FCPXMLExporter::buildNotesString(group, settings, {"great take", "sync ok"}),
              "V: great take, sync ok | A: Scene 12, Take 3");
    settings.notesSource = NotesSource::video;
    EXPECT_EQ(FCPXMLExporter::buildNotesString(group, settings, {"a"}), "V: a");
    EXPECT_EQ(FCPXMLExporter::buildNotesString(group, settings, {}), std::nullopt);
}

} // namespace
} // namespace orvane
