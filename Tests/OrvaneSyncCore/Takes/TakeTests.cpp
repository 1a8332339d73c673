#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"
#include "OrvaneSyncCore/Services/Takes/ClipRecordings.h"
#include "OrvaneSyncCore/Services/Takes/RecordedAtOnce.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"
#include "OrvaneSyncCore/Services/Takes/TakeDecisions.h"
#include "Support/Assets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <sstream>
#include <tuple>

namespace orvane {
namespace {

/// One file of a case; the path is below "/media".
struct File {
    const char* path;
    double start; ///< seconds after 10:00:00
    double seconds;
    int channels = 1;
    const char* recorder = "";
    const char* scene = "";
    double rate = 48000;
    std::uint64_t bytes = 0;
    int day = 0; ///< day of a fixed month; 0: unknown
};

MediaAsset asset(const File& file) {
    MediaAsset made(FileURL{std::string("/media/") + file.path}, AssetKind::audio);
    made.durationSeconds = file.seconds;
    made.channelCount = file.channels;
    made.sampleRate = file.rate;
    made.bextTimeReference = static_cast<std::uint64_t>(std::llround((36000 + file.start) * file.rate));
    made.bextOriginator = file.recorder;
    if (file.day > 0) made.contentCreatedDate = Date(std::chrono::days(20'000 + file.day));
    if (file.bytes > 0) made.fileSizeBytes = file.bytes;
    return *file.scene == 0 ? made : test::slated(made, file.scene, "1");
}

/// The clip that the matcher makes of the files and a video of one minute from 10:00:00 on.
SyncGroup clipOf(const std::vector<File>& files) {
    std::vector<MediaAsset> audios;
    for (const File& file : files) audios.push_back(asset(file));
    return SyncEngine().match({test::video("V.mov")}, audios).front();
}

/// The files of the take, such as "A/T01.WAV part 1-2 @0": path, role, channels, start on the take's axis.
std::string text(const SyncGroup& clip) {
    std::ostringstream text;
    for (const TakeFile& file : takeOf(clip, 2).files) {
        if (text.tellp() > 0) text << ", ";
        text << clip.audioMatches[file.matchIndex].audio->url.path.substr(7) << ' ' << name(file.role) << ' '
             << file.firstChannel;
        if (file.channelCount > 1) text << '-' << file.firstChannel + file.channelCount - 1;
        text << " @" << file.startSeconds;
    }
    return text.str();
}

TEST(Take, rolesAndRunningNumbers) {
    struct Case {
        const char* name;
        std::vector<File> files;
        const char* take;
        const char* status;
    };
    const std::vector<Case> cases{
        {"one file", {{"T.WAV", 1, 9, 3}}, "T.WAV part 1-3 @0", "Matched"},
        {"a file a channel, counted as people count",
         {{"T_1.WAV", 0, 60}, {"T_10.WAV", 0.02, 60}, {"T_2.WAV", 0, 60}},
         "T_1.WAV channel 1 @0, T_2.WAV channel 2 @0, T_10.WAV channel 3 @0.02",
         "Matched"},
        {"channels straight behind the number of the take; a shot is none",
         {{"REC_0001S1.WAV", 0, 60},
          {"REC_0001S2.WAV", 0, 60},
          {"REC_0002S3.WAV", 0, 60},
          {"12S1.WAV", 0, 9}},
         "REC_0001S1.WAV channel 1 @0, REC_0001S2.WAV channel 2 @0, REC_0002S3.WAV alternate 3 @0, "
         "12S1.WAV alternate 4 @0",
         "Ambiguous (4)"},
        {"as editing systems export them; a shot is none",
         {{"S12T03.A1.WAV", 0, 60}, {"S12T03.A2.WAV", 0, 60}, {"S12_A3.WAV", 0, 60}},
         "S12T03.A1.WAV channel 1 @0, S12T03.A2.WAV channel 2 @0, S12_A3.WAV alternate 3 @0",
         "Matched"},
        {"named channels, one of them short",
         {{"T-CH1.WAV", 0, 60}, {"T-CH2.WAV", 0, 60}, {"T_Boom.WAV", 0, 20}, {"T.WAV", 0, 60, 2}},
         "T_Boom.WAV channel 1 @0, T-CH1.WAV channel 2 @0, T-CH2.WAV channel 3 @0, T.WAV channel 4-5 @0",
         "Matched"},
        {"channels named within the names",
         {{"T_Boom_final.WAV", 0, 60}, {"T_Lav_final.WAV", 0, 60}},
         "T_Boom_final.WAV channel 1 @0, T_Lav_final.WAV channel 2 @0",
         "Matched"},
        {"what starts later, or at another rate, or has another name, is another recording",
         {{"T_1.WAV", 0, 60}, {"T_2.WAV", 0.6, 50}, {"T_3.WAV", 0, 60, 1, "", "", 96000}, {"U_4.WAV", 0, 60}},
         "T_1.WAV part 1 @0, T_3.WAV alternate 2 @0, U_4.WAV alternate 3 @0, T_2.WAV alternate 4 @0.6",
         "Matched"},
        {"another recorder, though the slate is the same",
         {{"A.WAV", 0, 60, 2, "a", "12"}, {"B.WAV", 0, 60, 2, "b", "12"}, {"C.WAV", 0, 60, 1, "A ", "12"}},
         "A.WAV channel 1-2 @0, C.WAV channel 3 @0, B.WAV alternate 4-5 @0",
         "Matched"},
        {"another slate, though the name is that of a channel",
         {{"T_1.WAV", 0, 60, 1, "", "12"}, {"T_2.WAV", 0, 60, 1, "", "13"}},
         "T_1.WAV part 1 @0, T_2.WAV alternate 2 @0",
         "Matched"},
        {"another day at the same time, where the clip has no date",
         {{"T_1.WAV", 0, 60, 1, "", "", 48000, 0, 1}, {"T_2.WAV", 0, 60, 1, "", "", 48000, 0, 2}},
         "T_1.WAV part 1 @0, T_2.WAV alternate 2 @0",
         "Matched"},
        {"a recorder with the same numbers on its own card",
         {{"A/T.WAV", 0, 60, 2, "", "", 48000, 7}, {"B/T.WAV", 0, 60, 2, "", "", 48000, 9}},
         "A/T.WAV part 1-2 @0, B/T.WAV alternate 3-4 @0",
         "Matched"},
        {"parts share their channels; the longest is no more than the others",
         {{"T-001.WAV", -50, 60, 2}, {"T-002.WAV", 10, 45, 2}, {"T-003.WAV", 55.3, 60, 2}},
         "T-001.WAV part 1-2 @0, T-002.WAV part 1-2 @60, T-003.WAV part 1-2 @105.3",
         "Split Recording (3)"},
        {"a short last part beside a second recorder",
         {{"T-1.WAV", 0, 55, 2, "a"}, {"T-2.WAV", 55, 60, 2, "a"}, {"S.WAV", 0, 60, 2, "b"}},
         "T-1.WAV part 1-2 @0, T-2.WAV part 1-2 @55, S.WAV alternate 3-4 @0",
         "Matched"},
        {"mono files, each in two parts, the last part short",
         {{"T_1-001.WAV", -5, 60}, {"T_2-001.WAV", -5, 60}, {"T_2-002.WAV", 55, 9}, {"T_1-002.WAV", 55, 9}},
         "T_1-001.WAV part 1 @0, T_1-002.WAV part 1 @60, T_2-001.WAV part 2 @0, T_2-002.WAV part 2 @60",
         "Matched"},
        {"a channel whose next part is missing",
         {{"T_1-001.WAV", 0, 50}, {"T_2-001.WAV", 0, 50}, {"T_2-002.WAV", 50, 9}},
         "T_1-001.WAV channel 1 @0, T_2-001.WAV part 2 @0, T_2-002.WAV part 2 @50",
         "Matched"},
        {"copies, of parts and of what is no part; sizes, else lengths, tell",
         {{"B/T-1.WAV", 0, 50, 1, "", "", 48000, 5},
          {"A/T-1.WAV", 0, 50, 1, "", "", 48000, 5},
          {"A/T-2.WAV", 50, 9},
          {"B/T-2.WAV", 50, 9},
          {"A/S.WAV", 3, 40},
          {"B/S.WAV", 3, 40}},
         "B/T-1.WAV part 1 @0, B/T-2.WAV part 1 @50, B/S.WAV alternate 2 @3, A/T-1.WAV mirror 0 @0, "
         "A/T-2.WAV mirror 0 @50, A/S.WAV mirror 0 @3",
         "Matched"},
        {"copies of mono files that were cut short are no channels",
         {{"A/T_1.WAV", 0, 60}, {"A/T_2.WAV", 0, 30}, {"B/T_1.WAV", 0, 50}, {"B/T_2.WAV", 0, 50}},
         "A/T_1.WAV channel 1 @0, B/T_2.WAV channel 2 @0, B/T_1.WAV alternate 3 @0, A/T_2.WAV alternate 4 @0",
         "Matched"},
        {"takes of one recorder under a camera that rolled on",
         {{"R01.WAV", -6, 21, 2, "r", "20"},
          {"R02.WAV", 17, 21, 2, "r", "21"},
          {"R03.WAV", 40, 21, 2, "r", "22"},
          {"B/R09.WAV", 17, 21, 2, "b"}},
         "R01.WAV part 1-2 @0, R02.WAV part 1-2 @23, R03.WAV part 1-2 @46, B/R09.WAV alternate 3-4 @23",
         "Matched"},
        {"the same in mono files",
         {{"R01_1.WAV", -6, 30}, {"R01_2.WAV", -6, 30}, {"R02_1.WAV", 26, 30}, {"R02_2.WAV", 26, 30}},
         "R01_1.WAV part 1 @0, R02_1.WAV part 1 @32, R01_2.WAV part 2 @0, R02_2.WAV part 2 @32",
         "Matched"},
        {"a take before it that ends within the picture's first seconds is in doubt",
         {{"R01.WAV", -20, 28}, {"R02.WAV", 10, 45}},
         "R02.WAV part 1 @0, R01.WAV alternate 2 @-30",
         "Ambiguous (2)"},
        {"another take is in doubt as ever",
         {{"T_1.WAV", 0, 50}, {"U.WAV", 55, 9}},
         "T_1.WAV part 1 @0, U.WAV alternate 2 @55",
         "Ambiguous (2)"},
    };
    for (const Case& row : cases) {
        const SyncGroup clip = clipOf(row.files);
        EXPECT_EQ(text(clip), row.take) << row.name;
        EXPECT_EQ(clip.matchStatus.label(), row.status) << row.name;
    }
}

TEST(Take, aCopyHasTheContentOfTheOther) {
    const auto roleOf = [](std::optional<std::uint64_t> mark) {
        MediaAsset one = asset({"A/T.WAV", 0, 60}), other = asset({"B/T.WAV", 0, 60});
        one.contentMark = 1;
        other.contentMark = mark;
        const SyncGroup clip = SyncEngine().match({test::video("V.mov")}, {one, other}).front();
        return takeOf(clip, 2).files.back().role;
    };
    EXPECT_EQ(roleOf(1), TakeRole::mirror);
    EXPECT_EQ(roleOf({}), TakeRole::mirror) << "unknown";
    EXPECT_EQ(roleOf(2), TakeRole::alternate);
}

TEST(Take, axisAndLength) {
    const Take chain =
        takeOf(clipOf({{"T-1.WAV", -50, 55, 2}, {"T-2.WAV", 5.2, 55, 4}, {"U.WAV", -70, 99}}), 2);
    EXPECT_NEAR(chain.offsetSeconds, -50, 1e-9);
    EXPECT_NEAR(chain.primaryStartSeconds, 55.2, 1e-9); // the second part has more of the clip
    EXPECT_NEAR(chain.durationSeconds, 110.2, 1e-9);
    EXPECT_EQ(chain.channelCount, 4);
    EXPECT_EQ(chain.runningChannelCount(), 5);
    EXPECT_TRUE(takeOf(clipOf({}), 2).isEmpty());
}

TEST(Take, filesOfOneRecorderThatOverlapAreOfDifferentTimes) {
    struct Case {
        const char* name;
        File other;
        bool ofAnotherMoment;
    };
    for (const Case& row :
         {Case{"another day", {"A/T_2.WAV", 30, 50, 1, "", "", 48000, 0, 2}, true},
          {"a take right behind it", {"A/T_2.WAV", 39.5, 20, 1, "", "", 48000, 0, 1}, false},
          {"another day, later", {"A/T_2.WAV", 45, 20, 1, "", "", 48000, 0, 2}, false},
          {"another folder", {"B/U.WAV", 30, 50, 1, "", "", 48000, 0, 2}, false},
          {"another recorder", {"A/U.WAV", 30, 50, 1, "b", "", 48000, 0, 2}, false}}) {
        const SyncGroup clip = clipOf({{"A/T_1.WAV", 0, 40, 1, "", "", 48000, 0, 1}, row.other});
        SyncGroup swapped = clip;
        std::ranges::reverse(swapped.audioMatches);
        EXPECT_EQ(ofOtherMoments(clip), std::vector<std::size_t>(row.ofAnotherMoment ? 1 : 0, 1)) << row.name;
        EXPECT_EQ(areOfOtherMoments(clip, swapped, 0), row.ofAnotherMoment) << row.name;
        EXPECT_FALSE(areOfOtherMoments(clip, clip, 0)) << row.name;
    }
    EXPECT_FALSE(areOfOtherMoments(clipOf({}), clipOf({}), 0)) << "no recording at all";
    const SyncGroup alone = clipOf({{"A/T_1.WAV", -10, 50}});
    for (const auto& [start, areOther] : {std::pair(5.0, true), {20.0, false}})
        EXPECT_EQ(areOfOtherMoments(alone, clipOf({{"A/T_2.WAV", start, 50}}), 0), areOther)
            << "two takes, more than half of one within the other: " << start;
}

TEST(Take, decisionsFollowTheirChannels) {
    const std::vector<File> files{{"A/T_1.WAV", 0, 60},
                                  {"A/T_2.WAV", 0, 60},
                                  {"A/T_3.WAV", 0, 60},
                                  {"B/T_2.WAV", 0, 60},
                                  {"U.WAV", 9, 50, 2}};
    const SyncGroup before = clipOf(files);
    const auto carried = [&](const std::vector<File>& now) {
        SyncGroup clip = clipOf(now);
        clip.manualActiveTracks = {2, 3, 5};
        clip.manualBlockOverrides = {{{}, 1, 4, 3}};
        carryDecisions(clip, before);
        const auto& ranges = clip.manualBlockOverrides;
        return std::tuple(clip.manualActiveTracks, ranges.empty() ? 0 : ranges[0].trackIndex,
                          ranges.empty() ? 0 : ranges[0].startSeconds);
    };
    using Tracks = std::set<int>;
    EXPECT_EQ(carried({files[1], files[2], files[4]}), std::tuple(Tracks{1, 2, 4}, 2, 1.0));
    EXPECT_EQ(carried({files[0], files[2], files[3], files[4]}), std::tuple(Tracks{2, 3, 5}, 2, 1.0));
    EXPECT_EQ(carried({files[0], files[1]}), std::tuple(Tracks{2}, 0, 0.0));
    EXPECT_EQ(std::get<0>(carried({})), (Tracks{2, 3, 5}));
    auto joined = files;
    joined.push_back({"A/T_0.WAV", -0.25, 60});
    EXPECT_EQ(carried(joined), std::tuple(Tracks{3, 4, 6}, 4, 1.0));
}

TEST(Take, channelsOfTakesThatWereCountedSeparatelyGetTheirNumbers) {
    using Tracks = std::set<int>;
    const std::vector<File> takes{{"R01.WAV", -6, 21, 2}, {"R02.WAV", 17, 21, 2}, {"R03.WAV", 40, 21, 2}};
    struct Case {
        const char* name;
        std::vector<File> more;
        Tracks stored, now;
        bool isChanged;
    };
    for (const Case& one : {Case{"the second take's first channel", {}, {3}, {1}, true},
                            {"channels of two takes", {}, {2, 5}, {1, 2}, true},
                            {"as they are counted now", {}, {1, 2}, {1, 2}, false},
                            {"another recorder's", {{"B/U.WAV", 0, 60, 2}}, {1, 8}, {1, 4}, true},
                            {"of a recording that is gone", {}, {9}, {9}, false}}) {
        auto files = takes;
        files.insert(files.end(), one.more.begin(), one.more.end());
        SyncGroup clip = clipOf(files);
        if (!one.more.empty()) putFirst(clip, recordingWith(clip, FileURL{"/media/R01.WAV"}));
        clip.manualActiveTracks = one.stored;
        EXPECT_EQ(countsTakesSeparately(clip), one.isChanged) << one.name;
        countTakesTogether(clip);
        EXPECT_EQ(clip.manualActiveTracks, one.now) << one.name << ": " << text(clip);
    }
}

TEST(Take, aRecordingThatIsChosenIsHeard) {
    using Tracks = std::set<int>;
    const auto chosen = [&](bool isOther, Tracks on) {
        SyncGroup before = clipOf({{"A/T.WAV", 0, 60, 2, "A"}, {"B/U.WAV", 0, 30, 3, "B"}});
        before.manualActiveTracks = std::move(on);
        before.measuredLUFS = -19;
        before.masterGainDB = -6;
        SyncGroup clip = before;
        if (isOther) std::ranges::reverse(clip.audioMatches);
        carryDecisions(clip, before);
        startWithRecording(clip, before);
        EXPECT_EQ(clip.measuredLUFS.has_value(), !isOther);
        return std::pair(clip.manualActiveTracks, clip.masterGainDB);
    };
    EXPECT_EQ(chosen(true, {1}), std::pair(Tracks({1, 2, 3}), 0.0)) << "no channel of it was on";
    EXPECT_EQ(chosen(true, {1, 4}), std::pair(Tracks({2, 4}), 0.0)) << "one was";
    EXPECT_EQ(chosen(true, {}), std::pair(Tracks(), 0.0));
    EXPECT_EQ(chosen(false, {1}), std::pair(Tracks({1}), -6.0)) << "the same recording";
}

TEST(Take, anAnchorKeepsItsPlaceUnderAnotherFirstRecording) {
    const std::vector<File> files{{"A/T.WAV", -7, 90, 1, "A"}, {"B/U.WAV", -5, 30, 1, "B"}};
    const auto carried = [&](const std::vector<File>& now, std::optional<double> anchor) {
        const SyncGroup before = clipOf(files);
        SyncGroup clip = clipOf(now);
        clip.audioAnchorOffsetInAudioSeconds = anchor;
        carryAnchor(clip, before);
        return clip.audioAnchorOffsetInAudioSeconds;
    };
    EXPECT_EQ(carried(files, 10), 10);
    EXPECT_EQ(carried({files[1]}, 10), 8);
    EXPECT_EQ(carried({files[1]}, 1), std::nullopt) << "before its first sample";
    EXPECT_EQ(carried({files[1]}, 33), std::nullopt) << "behind its last";
    EXPECT_EQ(carried({}, 10), std::nullopt);
    EXPECT_EQ(carried({{"B/U.WAV", -9, 90, 1, "B"}}, {}), std::nullopt) << "no anchor before";
    const Take chain = takeOf(clipOf({{"T-1.WAV", -50, 55, 2}, {"T-2.WAV", 5.2, 55, 4}}), 2);
    for (const auto& [asked, anchor] : {std::pair(-40.0, -40.0), {-60.0, -55.2}, {54.0, 54.0}, {60.0, 55.0}})
        EXPECT_NEAR(withinTake(chain, asked), anchor, 1e-9) << "seconds of its second file";
}

TEST(Take, namesOfChannels) {
    const auto named = [](MediaAsset file, std::vector<IXMLTrack> tracks) {
        file.ixmlData = IXMLData();
        file.ixmlData->tracks = std::move(tracks);
        return file;
    };
    const auto check = [](const char* name, const std::vector<MediaAsset>& audios,
                          const std::vector<IXMLTrack>& expected) {
        const SyncGroup clip = SyncEngine().match({test::video("V.mov")}, audios).front();
        EXPECT_EQ(namedChannels(clip, takeOf(clip, 2)), expected) << name;
    };
    const MediaAsset one = asset({"T_1.WAV", 0, 60}), two = asset({"T_2.WAV", 0, 60});
    check("a file alone keeps its own", {named(one, {{3, "Boom"}})}, {{3, "Boom"}});
    check("each its own track, whatever its number", {named(one, {{3, "Boom"}}), named(two, {{1, "Lav"}})},
          {{1, "Boom"}, {2, "Lav"}});
    check("the track that names the file",
          {named(asset({"T_Boom.WAV", 0, 60}), {{1, "Boom"}}),
           named(asset({"T_Ann K.WAV", 0, 60}), {{1, "Ann K"}})},
          {{1, "Ann K"}, {2, "Boom"}});
    const std::vector<IXMLTrack> listed{{2, "Lav"}, {7, "Spare"}, {1, "Boom"}};
    check("a list of more tracks, by their numbers", {named(one, listed), named(two, listed)},
          {{1, "Boom"}, {2, "Lav"}});
    check("all tracks in every file",
          {named(one, {{1, "Boom"}, {5, "Lav"}}), named(two, {{1, "Boom"}, {5, "Lav"}})},
          {{1, "Boom"}, {2, "Lav"}});
    check("a file of two beside one",
          {named(asset({"T.WAV", 0, 60, 2}), {{2, "R"}, {9, "none"}}), named(two, {{1, "Lav"}})},
          {{1, "Lav"}, {3, "R"}});
}

} // namespace
} // namespace orvane
