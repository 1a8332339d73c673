#include "OrvaneSyncCore/Export/DocumentReader.h"
#include "OrvaneSyncCore/Export/ExportFixtures.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"
#include "Support/Test.h"

namespace orvane {
namespace {

using namespace test;

/// A file of a take that begins with the picture; `start` is in seconds from there.
MediaAsset file(const std::string& name, double start, double seconds, int channels = 1,
                const std::vector<IXMLTrack>& tracks = {}) {
    MediaAsset made = asset(AssetKind::audio, name, "", seconds);
    made.channelCount = channels;
    made.sampleRate = 48000;
    made.bextTimeReference = static_cast<std::uint64_t>((36000 + start) * 48000);
    if (!tracks.empty()) {
        made.ixmlData = ixml("1", "1");
        made.ixmlData->tracks = tracks;
    }
    return made;
}

SyncGroup take(const std::vector<MediaAsset>& files) {
    SyncGroup group = matched(picture(), {}); // 20 seconds from 10:00:00 on
    for (const MediaAsset& sound : files)
        group.audioMatches.emplace_back(sound, static_cast<double>(*sound.bextTimeReference) / 48000 - 36000,
                                        1.0);
    return group;
}

/// The clip's duration; its files and channels with their offsets (a channel inside a file's clip is on the
/// axis of the file's first channel); its role sources, "+" if active, else "-"; and the number of files in
/// the whole document. Such as "20s Mix@36000s +Mix 2".
std::string soundOf(const std::string& document) {
    std::string text;
    for (const std::string& line : linesWith(document, "")) {
        const std::string role = attributeOf(line, "role");
        if (line.starts_with("<sync-clip ")) text += attributeOf(line, "duration");
        if (line.starts_with("<clip ")) text += " clip@" + attributeOf(line, "offset");
        if (line.starts_with("<audio ")) text += " " + role.substr(9) + "@" + attributeOf(line, "offset");
        if (line.starts_with("<audio-role"))
            text += (attributeOf(line, "active") == "0" ? " -" : " +") + role.substr(9);
    }
    return text + " " + std::to_string(countOf(document, "<media-rep "));
}

TEST(ExporterTakes, AreOneRecordingInTheDocument) {
    const auto check = [](const char* name, const std::vector<MediaAsset>& files, const std::string& sound,
                          const std::function<void(SyncGroup&, ExportSettings&)>& change = {}) {
        SyncGroup group = take(files);
        ExportSettings settings = settingsAt(25);
        settings.set(settings::generateRawMediaEvent, true);
        if (change) change(group, settings);
        EXPECT_EQ(soundOf(exported(group, settings)), sound) << name;
    };
    const auto second = [](SyncGroup& group, ExportSettings&) { group.manualActiveTracks = {2}; };
    const auto whole = [](SyncGroup&, ExportSettings& settings) {
        settings.set(settings::trimMode, TrimMode::noTrim);
    };
    const std::vector<MediaAsset> split{file("T1_2.WAV", 8, 22, 2), file("T1_1.WAV", -1, 9, 2)};
    const std::string splitChannels = " Mix@36008s Boom@36008s clip@35999s Mix@35999s Boom@35999s";
    check("one file a channel: the names of a recording with three",
          {file("T1_Tr1.WAV", 0, 30), file("T1_Tr2.WAV", 0, 30), file("T1_Tr3.WAV", 0, 30)},
          "20s Boom@36000s Lav 1@36000s clip@36000s Mix@36000s -Mix +Boom -Lav 1 4", second);
    check("the recorder's names",
          {file("T1_1.WAV", 0, 30, 1, {{1, "Boom"}}), file("T1_2.WAV", 0, 30, 1, {{2, "Anna"}})},
          "20s Anna@36000s clip@36000s Boom@36000s +Boom +Anna 3");
    check("a channel of a split take is one in all parts", split, "20s" + splitChannels + " -Mix +Boom 3",
          second);
    check("so it is in the takes of a recorder that was stopped under the clip",
          {file("R02.WAV", 7, 5, 2), file("R01.WAV", 0, 5, 2), file("R03.WAV", 14, 6, 2)},
          "20s Mix@36007s Boom@36007s Mix@36014s Boom@36014s clip@36000s Mix@36000s Boom@36000s -Mix +Boom 4",
          second);
    check("its length is that of the chain", split, "31s" + splitChannels + " +Mix +Boom 3", whole);
    check("offsets move every file",
          {file("T1_1.WAV", 0, 8), file("T1_2.WAV", 8, 22), file("ZOOM0004.WAV", 2, 5, 2)},
          "20s Mix@900202/25s Mix 2@900052/25s Boom@36002s clip@900002/25s Mix@36000s +Mix +Mix 2 +Boom 4",
          [](SyncGroup& group, ExportSettings& settings) {
              group.manualAudioOffsetSeconds = 0.12;
              settings.globalAudioOffsetSeconds = -0.04;
          });
    check("a copy on another card is left out", {file("a/T1.WAV", 0, 30), file("b/T1.WAV", 0, 30)},
          "20s clip@36000s Mix@36000s +Mix 2");
    check("names that come again get a number that is free",
          {file("T1.WAV", 0, 30, 3, {{1, "Anna"}, {2, "Anna"}, {3, "Anna 2"}})},
          "20s clip@36000s Anna@36000s Anna 3@36000s Anna 2@36000s +Anna +Anna 3 +Anna 2 2");
}

TEST(ExporterTakes, OverlapIsWherePictureAndSoundBothAre) {
    const auto check = [](const char* name, const std::vector<MediaAsset>& files, const char* extent,
                          double manualOffset = 0) {
        SyncGroup group = take(files);
        group.manualAudioOffsetSeconds = manualOffset;
        ExportSettings settings = settingsAt(25);
        settings.set(settings::trimMode, TrimMode::overlap);
        const std::string clip = linesWith(exported(group, settings), "<sync-clip ").front();
        EXPECT_EQ(attributeOf(clip, "start") + " " + attributeOf(clip, "duration"), extent) << name;
    };
    check("sound under all of it", {file("T1.WAV", -1, 30)}, "36000s 20s");
    check("sound that begins later", {file("T1.WAV", 4, 30)}, "36004s 16s");
    check("sound that ends earlier", {file("T1.WAV", -2, 10)}, "36000s 8s");
    check("frames that have sound in part are left out", {file("T1.WAV", 4.01, 10)}, "900101/25s 249/25s");
    check("all parts of a take", {file("T1_1.WAV", 4, 5), file("T1_2.WAV", 9, 5)}, "36004s 10s");
    check("a part was lost between two others", {file("T1_1.WAV", 4, 5), file("T1_3.WAV", 12, 4)},
          "36004s 12s");
    check("a nudge moves it", {file("T1.WAV", 4, 30)}, "36005s 15s", 1);
    check("nothing in common", {file("T1.WAV", 40, 30)}, "36000s 20s");
}

TEST(ExporterTakes, AreWhereTheMatchPutThem) {
    const auto placeOf = [](std::optional<double> pictureStart, double soundStart, double offset,
                            double correction = 0) {
        SyncGroup group = take({file("T1.WAV", soundStart - 36000, 60)});
        group.video.startTimecodeString.reset();
        if (pictureStart) group.video.startTimecodeString = TimecodeUtils::secondsToTC(*pictureStart, 25.0);
        group.audioMatches.front().syncOffsetSeconds = offset;
        ExportSettings settings = settingsAt(25);
        settings.matchRules.soundOffsetSeconds = correction;
        const std::string clip = linesWith(exported(group, settings), "<clip ").front();
        return attributeOf(clip, "offset") + " " + attributeOf(clip, "start");
    };
    EXPECT_EQ(placeOf(36000, 35998, -2), "35998s 35998s");
    EXPECT_EQ(placeOf({}, 35998, 0.5), "1/2s 35998s") << "by hand, to a picture without timecode";
    EXPECT_EQ(placeOf(1, 86395, -6), "-5s 86395s") << "from before midnight";
    EXPECT_EQ(placeOf(86390, 5, 15), "86405s 5s") << "behind midnight";
    EXPECT_EQ(placeOf(36000, 39598.5, -1.5, -3600), "71997/2s 79197/2s") << "an hour off";
    EXPECT_EQ(placeOf(36000, 39598.5, 3598.5, -3600), "79197/2s 79197/2s") << "before it was corrected";
    EXPECT_EQ(placeOf(36000, 35998, -2.04), "35998s 35998s") << "the picture has another rate by now";
}

TEST(ExporterTakes, NothingLastsLessThanAFrameOrNoTime) {
    SyncGroup group = take({file("T1.WAV", 2, 0.02)}); // the recorder was stopped at once
    EXPECT_TRUE(linesWith(exported(group, settingsAt(25)), "duration=\"0s\"").empty());
    group = take({});
    group.video.durationSeconds = 0.041; // one picture at 23.976, in whole milliseconds
    group.video.projectFrameRate = 23.976;
    EXPECT_EQ(attributeOf(linesWith(exported(group, settingsAt(25)), "<asset-clip ").front(), "duration"),
              "1001/24000s");
}

TEST(ExporterTakes, CurvesAreInTheFileThatHasTheTime) {
    SyncGroup group = take({file("T1_1.WAV", 0, 8), file("T1_2.WAV", 8, 12), file("ZOOM0004.WAV", 0, 5)});
    ExportSettings settings = settingsAt(25);
    settings.set(settings::volumeKeyframes, true);
    auto& blocks = settings.smartAudioResults[group.id].blocks;
    for (const auto& [end, track] : std::initializer_list<std::pair<double, int>>{{3, 1}, {8, 2}, {20, 1}}) {
        BlockDecision& block = blocks.emplace_back();
        block.startSeconds = blocks.size() > 1 ? blocks[blocks.size() - 2].endSeconds : 0;
        block.endSeconds = end;
        block.activeTrack = track;
    }
    std::string curves;
    const Node root = readDocument(exported(group, settings));
    for (const Node* channel : root.all("audio")) {
        curves += channel->text("start") + ":";
        for (const Node* point : channel->all("keyframe"))
            curves += " " + point->text("time") + " " + point->text("value");
        curves += "; ";
    }
    // Half of the change at the join is in each of the two files.
    EXPECT_EQ(curves, "36008s: 36008s -48dB 288065/8s 0dB 36020s 0dB; 36000s:; "
                      "36000s: 36000s 0dB 288023/8s 0dB 288025/8s -96dB 288063/8s -96dB 36008s -48dB; ");
}

} // namespace
} // namespace orvane
