#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"

#include "Support/Assets.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <cmath>

namespace orvane {
namespace {

using enum MatchingDays;

MediaAsset in(const char* folder, MediaAsset asset) {
    asset.url.path = std::string(folder) + "/" + asset.filename;
    return asset;
}

MediaAsset created(MediaAsset asset, const char* date) {
    asset.contentCreatedDate = dateFromISO8601(date);
    return asset;
}

MediaAsset createdIn(int zoneMinutes, MediaAsset asset, const char* date) {
    asset.dateZoneMinutes = zoneMinutes;
    return created(std::move(asset), date);
}

/// The offsets of the matches of the first video.
std::vector<double> offsets(MatchRules rules, const std::vector<MediaAsset>& videos,
                            const std::vector<MediaAsset>& audios) {
    std::vector<double> result;
    for (const SyncGroup& group : SyncEngine().match(videos, audios, rules))
        if (group.video.id == videos.front().id)
            for (const AudioMatch& match : group.audioMatches)
                result.push_back(std::round(match.syncOffsetSeconds * 1000) / 1000);
    return result;
}

using Offsets = std::vector<double>;

TEST(Days, MeetByTheirRule) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    const auto video = [](const char* name, const char* start) { return test::video(name, start, 30); };
    const auto audio = [](const char* name, const char* start) { return test::audio(name, start, 60); };
    const MediaAsset early = video("A_240518.mov", "00:00:01:00"),
                     late = audio("T_240517.wav", "23:59:55:00");
    struct Case {
        const char* name;
        MatchingDays days;
        MediaAsset clip;
        std::vector<MediaAsset> sounds;
        Offsets offsets;
    };
    const std::vector<Case> cases{
        {"across midnight", midnight, early, {late}, {-6}},
        {"across midnight by default", automatic, early, {late}, {-6}},
        {"a recording of the evening before is of another day", same, early, {late}, {}},
        {"the matcher's own rule knows no midnight", neighbours, early, {late}, {}},
        {"another day at the same time",
         midnight,
         video("A_240518.mov", "10:00:00:00"),
         {audio("T_240517.wav", "10:00:00:00")},
         {}},
        {"the neighbouring day at the same time",
         neighbours,
         video("A_240518.mov", "10:00:00:00"),
         {audio("T_240517.wav", "10:00:00:00")},
         {0}},
        {"an undated recording across midnight", same, early, {audio("T.wav", "23:59:55:00")}, {-6}},
        {"an undated clip across midnight", automatic, video("A.mov", "00:00:01:00"), {late}, {-6}},
        {"an undated clip before midnight",
         automatic,
         video("A.mov", "23:59:50:00"),
         {audio("T_240518.wav", "00:00:01:00")},
         {11}},
        {"a date from the end of the clip",
         automatic,
         created(video("A.mov", "23:59:50:00"), "2024-05-18T00:00:20Z"),
         {late},
         {5}},
        {"a date that is the next day's where the recordings are read",
         automatic,
         createdIn(-240, video("A.mov", "20:03:00:00"), "2024-05-18T00:03:00Z"),
         {audio("T_240517.wav", "20:02:55:00"), audio("T_240518.wav", "20:02:57:00")},
         {-5}},
        {"such a date with a name that has one",
         midnight,
         created(video("A_240518.mov", "23:59:50:00"), "2024-05-18T00:00:20Z"),
         {late},
         {}},
        {"a date without a time of day",
         midnight,
         created(video("A.mov", "23:59:50:00"), "2024-05-18T00:00:00Z"),
         {late},
         {}},
        {"hours apart it is another zone",
         automatic,
         created(video("A.mov", "22:00:00:00"), "2024-05-18T00:00:20Z"),
         {audio("T_240517.wav", "22:00:00:00")},
         {0}}, // the card meets no clip of its own day
    };
    for (const Case& one : cases)
        EXPECT_EQ(offsets({.days = one.days}, {one.clip}, one.sounds), one.offsets) << one.name;

    MediaAsset header = video("A.mov", "00:00:01:00");
    header.headerDate = dateFromISO8601("2024-05-18T00:00:01Z");
    const std::vector<MediaAsset> nights{late, audio("T_240516.wav", "23:59:56:00"),
                                         audio("T_240517.wav", "00:00:10:00"), audio("T.wav", "00:00:15:00")};
    EXPECT_EQ(offsets({}, {header}, nights), (Offsets{-6, 14, -5, 9}))
        << "other nights than that of the header come last";
    const auto statusOf = [&](const std::vector<MediaAsset>& sounds) {
        return SyncEngine().match({header}, sounds, {}).front().matchStatus;
    };
    EXPECT_EQ(statusOf(nights), MatchStatus::matched()) << "and are no rivals";
    const std::vector<MediaAsset> rivals{nights[1], audio("T_240518.wav", "00:00:21:00")};
    EXPECT_EQ(offsets({}, {header}, rivals), (Offsets{-5, 20})) << "much more in common";
    EXPECT_EQ(statusOf(rivals), MatchStatus::ambiguous(2));
    EXPECT_EQ(offsets({}, {header}, {nights[2]}), Offsets{9}) << "nothing of its day";
    EXPECT_EQ(offsets({.days = midnight}, {header}, nights), (Offsets{-6, 14})) << "the header parts days";
    EXPECT_EQ(offsets({.days = same}, {header}, nights), Offsets{14});
    header.headerDate = dateFromISO8601("2024-05-18T08:00:01Z");
    for (const MatchingDays days : {automatic, midnight, same})
        EXPECT_EQ(offsets({.days = days}, {header}, nights).size(), 4U) << "the header counts another zone";
}

TEST(Days, AWrongClockIsTriedOnlyWhereTheCardMeetsNothing) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    const MediaAsset clip = test::video("A_240518.mov"), other = test::video("B_240517.mov", "12:00:00:00");
    const MediaAsset wrong = in("/S1", test::audio("T1_240517.wav"));
    const MediaAsset sibling = in("/S1", test::audio("T2_240517.wav", "12:00:00:00"));
    const MediaAsset elsewhere = in("/S2", sibling);
    const MediaAsset own = test::audio("T3_240518.wav", "10:00:10:00", 10);
    EXPECT_EQ(offsets({}, {clip}, {wrong}), Offsets{0});
    EXPECT_EQ(offsets({}, {clip, other}, {wrong, elsewhere}), Offsets{0});
    EXPECT_EQ(offsets({}, {clip, other}, {wrong, sibling}), Offsets{}) << "the card's clock is right";
    EXPECT_EQ(offsets({}, {clip}, {wrong, own}), Offsets{10}) << "sound of its own day is better";
    const MediaAsset late = test::video("C_240517.mov", "23:59:50:00", 20);
    EXPECT_EQ(offsets({}, {test::video("D_240517.mov", "00:20:00:00"), late},
                      {in("/S1", test::audio("T4_240518.wav", "00:20:00:00")),
                       in("/S1", test::audio("T5_240518.wav", "00:00:05:00", 5))}),
              Offsets{0})
        << "clips that are named by the day on which the night began, of which one runs past midnight";
    EXPECT_EQ(offsets({.days = midnight}, {clip}, {wrong}), Offsets{});
    EXPECT_EQ(offsets({}, {clip}, {in("/S1", test::audio("T_240520.wav"))}), Offsets{}) << "no neighbour";
}

TEST(Days, DatesOfACardMayCountAnotherZone) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    const auto clip = [](const char* name, const char* start, const char* date) {
        return created(test::video(name, start), date);
    };
    const MediaAsset evening = clip("A2.mov", "17:30:00:00", "2024-05-18T00:30:40Z");
    const std::vector<MediaAsset> sounds{test::audio("T1_240517.wav"),
                                         test::audio("T2_240517.wav", "17:30:00:00")};
    const MediaAsset other = in("/B", clip("C1.mov", "10:00:00:00", "2024-05-17T10:00:00Z"));
    EXPECT_EQ(offsets({}, {evening, clip("B1.mov", "10:00:00:00", "2024-05-17T17:00:00Z"), other}, sounds),
              Offsets{0})
        << "seven hours ahead of the timecode, as the whole card is";
    EXPECT_EQ(offsets({}, {evening, clip("A1.mov", "10:00:00:00", "2024-05-17T10:00:00Z")}, sounds),
              Offsets{})
        << "one clip shows no zone";

    // Headers in UTC of a shoot in UTC-8: clips after 16:00 have the next day's date, and so have clips of
    // the second day.
    std::vector<MediaAsset> clips, takes;
    const auto film = [&](const char* name, const char* start, const char* date, const char* sound) {
        clips.push_back(test::video(name, start, 30));
        clips.back().headerDate = dateFromISO8601(date);
        takes.push_back(test::audio(sound, start));
    };
    film("A1.mov", "16:30:00:00", "2024-05-18T00:30:02Z", "T1_240517.wav");
    film("A2.mov", "15:10:00:00", "2024-05-17T23:10:02Z", "T2_240517.wav");
    film("A3.mov", "15:10:05:00", "2024-05-18T23:10:07Z", "T3_240518.wav");
    film("A4.mov", "16:30:05:00", "2024-05-19T00:30:07Z", "T4_240518.wav");
    SyncGroupList card;
    for (const SyncGroup& group : SyncEngine().match(clips, takes, MatchRules())) {
        EXPECT_EQ(group.matchStatus, MatchStatus::matched());
        EXPECT_EQ(group.primaryAudio()->filename[1], group.video.filename[1]) << "not that of the other day";
        card.append(group);
    }
    clips[1].headerDate = dateFromISO8601("2024-05-17T15:10:02Z"); // written again, in another time zone
    const auto mixed =
        SyncEngine().match({clips[0], clips[1]}, {takes[0], test::audio("T5_240518.wav", "16:30:00:00")}, {});
    EXPECT_EQ(mixed.front().primaryAudio()->filename, "T5_240518.wav") << "of no zone, the header as it is";
    const auto again = SyncEngine().match({clips[0]}, takes, MatchRules(), {}, &card);
    EXPECT_EQ(again.front().primaryAudio()->filename, "T1_240517.wav") << "the whole card shows the zone";
}

TEST(Days, OtherDaysAreLeftOutWhereHeaderDatesAndFoldersAgree) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    struct Case {
        const char *name, *header, *ownFolder, *otherFolder;
        double ownSeconds;
        Offsets found;
    };
    for (const Case& one :
         {Case{"two days of folders", "2024-05-17T10:00:00Z", "/D1/SND", "/D2/SND", 60, {-10}},
          {"all sound in one folder", "2024-05-17T10:00:00Z", "/SND", "/SND", 60, {-10, -20}},
          {"the header of the other day", "2024-05-18T10:00:00Z", "/D1/SND", "/D2/SND", 60, {-20, -10}},
          {"a part of its own sound", "2024-05-17T10:00:00Z", "/D1/SND", "/D2/SND", 30, {-10, -20}}}) {
        MediaAsset clip = in("/D1/CAM", test::video("C1.mov", "10:00:00:00", 30));
        clip.headerDate = dateFromISO8601(one.header);
        const MediaAsset own = in(one.ownFolder, test::audio("T1_240517.wav", "09:59:50:00", one.ownSeconds));
        const MediaAsset other = in(one.otherFolder, test::audio("T1_240518.wav", "09:59:40:00", 60));
        EXPECT_EQ(offsets({}, {clip}, {own, other}), one.found) << one.name;
    }
}

TEST(Days, OtherDaysAreLeftOutBesideClipsThatConfirmTheirHeaders) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    struct Case {
        const char* name;
        int confirmed;     ///< clips that only have their own day's sound
        bool isSoundKnown; ///< the other day's recordings have a clip of that day
        std::size_t found; ///< recordings of the first clip
        const char* folder = "/CAM/A1";
        int own = 0; ///< number of confirmed clips in the first clip's folder, even if `folder` is another
    };
    for (const Case& one : {Case{"a day of clips", 3, true, 1},
                            {"clips of another camera tell nothing", 3, true, 2, "/CAM/B1"},
                            {"a clip and two of the card beside it", 3, true, 1, "/CAM/B1", 1},
                            {"a clip and two of another tree", 3, true, 2, "/PHONE/B1", 1},
                            {"two clips tell nothing", 2, true, 2},
                            {"a recorder whose date may be wrong", 3, false, 2}}) {
        std::vector<MediaAsset> clips, sound;
        const auto add = [&](const std::string& name, const char* label, const char* header,
                             const char* folder) {
            clips.push_back(in(folder, test::video(name, label, 30)));
            clips.back().headerDate = dateFromISO8601(header);
        };
        add("A0.mov", "10:00:00:00", "2024-05-17T10:00:00Z", "/CAM/A1");
        sound.push_back(in("/S1", test::audio("T0_240517.wav", "09:59:50:00", 60)));
        sound.push_back(in("/S2", test::audio("W_240518.wav", "09:59:40:00", 60)));
        for (int i = 1; i <= one.confirmed; ++i) {
            const std::string at = "1" + std::to_string(i) + ":00:00";
            add("A" + std::to_string(i) + ".mov", (at + ":00").c_str(), ("2024-05-17T" + at + "Z").c_str(),
                i <= one.own ? "/CAM/A1" : one.folder);
            sound.push_back(in("/S1", test::audio("T" + std::to_string(i) + "_240517.wav", at + ":00", 40)));
        }
        if (one.isSoundKnown) {
            add("B1.mov", "16:00:00:00", "2024-05-18T16:00:00Z", "/CAM/A2");
            sound.push_back(in("/S2", test::audio("U1_240518.wav", "16:00:00:00", 40)));
        }
        const auto groups = SyncEngine().match(clips, sound, {});
        EXPECT_EQ(groups.front().audioMatches.size(), one.found) << one.name;
        const auto alone = SyncEngine().match({clips.front()}, sound, {}, {}, &groups);
        EXPECT_EQ(alone.front().audioMatches.size(), one.found) << one.name << ", by itself";
    }
}

TEST(Days, OtherDaysAreLeftOutWhereACameraHasTheDaysOfTheRecordings) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    enum class Fault { none, cameraADayAhead, wildTrackOfAThirdDay, dateKeptAfterMidnight, otherCamera };
    struct Case {
        Fault fault;
        std::size_t withoutOwn, withOwn; ///< recordings of a clip without own sound, and of one with it
    };
    for (const Case& one : {Case{Fault::none, 0, 1},
                            {Fault::cameraADayAhead, 1, 2},
                            {Fault::wildTrackOfAThirdDay, 1, 2},
                            {Fault::dateKeptAfterMidnight, 1, 2},
                            {Fault::otherCamera, 2, 1}}) {
        std::vector<MediaAsset> clips, sound;
        const auto film = [&](const std::string& name, int day, int hour) {
            const std::string at = (hour < 10 ? "0" : "") + std::to_string(hour) + ":00:00";
            clips.push_back(in("/CAM", test::video(name + ".mov", at + ":00", 30)));
            clips.back().headerDate = dateFromISO8601("2024-05-" + std::to_string(day) + "T" + at + "Z");
        };
        const auto record = [&](int day, int hour) {
            const std::string at = (hour < 10 ? "0" : "") + std::to_string(hour) + ":00:00:00";
            const std::string name =
                "T" + std::to_string(sound.size()) + "_2405" + std::to_string(day) + ".wav";
            sound.push_back(in("/SND", test::audio(name, at, 60)));
        };
        for (int day = 17; day < 19; ++day)
            for (int i = 0; i < 5; ++i) {
                film("C" + std::to_string(clips.size()), day + (one.fault == Fault::cameraADayAhead), 13 + i);
                if (i > 0 || day > 17) record(day, 13 + i);
            }
        if (one.fault == Fault::wildTrackOfAThirdDay) record(19, 20);
        for (int hour = 1; hour < 4 && one.fault == Fault::dateKeptAfterMidnight; ++hour)
            film("C9" + std::to_string(hour), 18, hour), record(17, hour);
        if (one.fault == Fault::otherCamera) film("A0", 18, 14);
        const auto groups = SyncEngine().match(clips, sound, {});
        EXPECT_EQ(groups[0].audioMatches.size(), one.withoutOwn) << static_cast<int>(one.fault);
        EXPECT_EQ(groups[2].audioMatches.size(), one.withOwn) << static_cast<int>(one.fault);
    }
}

TEST(Days, PartsOfARecordingPassMidnight) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    const auto groups = SyncEngine().match(
        {test::video("A_240517.mov", "23:59:30:00", 60)},
        {test::audio("T_240517_1.wav", "23:59:00:00", 60), test::audio("T_240518_2.wav", "00:00:00:00", 60)},
        MatchRules());
    EXPECT_EQ(groups.front().matchStatus, MatchStatus::splitRecording(2));
}

TEST(Days, WhatIsAttachedByHandLiesByItsTimeOfDay) {
    const MediaAsset clip = test::video("A_240518.mov", "10:00:00:00", 30);
    struct Case {
        const char* name;
        MatchingDays days;
        MediaAsset clip;
        const char* start;
        double offset, overlap;
    };
    for (const Case& one : {
             Case{"another date", automatic, clip, "09:59:50:00", -10, 30},
             {"less than a second in common", automatic, clip, "10:00:29:15", 29.6, 0.4},
             {"nothing in common", automatic, clip, "11:00:00:00", 3600, 0},
             {"behind midnight", automatic, test::video("A.mov", "23:59:50:00", 30), "00:00:05:00", 15, 15},
             {"before midnight", automatic, test::video("A.mov", "00:00:10:00", 30), "23:59:30:00", -40, 20},
             {"no midnight", neighbours, test::video("A.mov", "00:00:10:00", 30), "23:59:30:00", 86360, 0},
         }) {
        const auto positioned = SyncEngine::matchByTimecode(
            one.clip, test::audio("T_240517.wav", one.start, 60), {.days = one.days});
        EXPECT_NEAR(positioned.syncOffsetSeconds, one.offset, 1e-6) << one.name;
        EXPECT_NEAR(positioned.overlapDurationSeconds, one.overlap, 1e-6) << one.name;
    }
    const test::ScopedEnvironment zone("TZ", "UTC");
    MediaAsset withoutStart = created(test::audio("T.wav", "", 60), "2024-05-18T12:00:00Z");
    withoutStart.startTimecodeString.reset();
    const auto positioned =
        SyncEngine::matchByTimecode(test::video("A_240518.mov", "00:00:10:00", 30), withoutStart, {});
    EXPECT_EQ(std::pair(positioned.syncOffsetSeconds, positioned.overlapDurationSeconds),
              std::pair(-10.0, 30.0))
        << "it counts from midnight";
}

TEST(Corrections, MoveWhereFilesLie) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    const auto rules = [](const SourceCorrections& corrections, double fps = 25) {
        return MatchRules::of(automatic, corrections, rateOfMostClips({test::video("x", "", 1, fps)}));
    };
    MediaAsset counted = test::audio("T_240517.wav");
    counted.bextTimeReference = 9 * 3600 * 48000ULL;
    counted.sampleRate = 48000;
    const MediaAsset clip = test::video("A_240517.mov");
    EXPECT_EQ(offsets(rules({}), {clip}, {counted}), Offsets{});
    EXPECT_EQ(offsets(rules({.soundOffset = "01:00:00:05"}), {clip}, {counted}), Offsets{0.2});
    EXPECT_EQ(offsets(rules({.soundOffset = "-01:00:00:00"}), {clip}, {test::audio("T.wav", "11:00:10:00")}),
              Offsets{10});
    const MediaAsset old = test::audio("T_000101.wav");
    EXPECT_EQ(offsets(rules({.soundDate = "2024-05-17"}), {clip}, {old}), Offsets{0});
    const std::vector<MediaAsset> night{test::audio("T1_000101.wav", "22:00:00:00"),
                                        test::audio("T2_000102.wav", "01:00:00:00")};
    EXPECT_EQ(
        offsets(rules({.soundDate = "2024-05-17"}), {test::video("A_240518.mov", "01:00:00:00")}, night),
        Offsets{0})
        << "the night passes midnight";
    MatchRules byDate = rules({.soundDate = "2024-05-17"});
    byDate.days = midnight;
    EXPECT_EQ(offsets(byDate, {test::video("A_240518.mov")}, {old}), Offsets{}) << "clips keep their own day";
    MatchRules byNeighbours = rules({.soundDate = "2024-05-17"});
    byNeighbours.days = neighbours;
    EXPECT_EQ(offsets(byNeighbours, {clip}, {old}), Offsets{0});

    MediaAsset film = test::video("A.mov", "10:00:00:00", 60, 23.976), stated = film;
    stated.timecodeFrameRate = TimecodeFrameRate::fps25;
    const MediaAsset slate = test::audio("T.wav", "10:00:00:00");
    EXPECT_EQ(offsets(rules({}), {film}, {slate}), Offsets{-36.0}) << "25 frames a second against 23.976";
    const auto at = [&](const char* rate) {
        return rules(SourceCorrections::fromTexts({}, {}, rate), 23.976);
    };
    EXPECT_EQ(offsets(at("23.976"), {film}, {slate}), Offsets{0});
    EXPECT_EQ(offsets(at("24"), {stated}, {slate}), Offsets{0});
    EXPECT_EQ(offsets(at("24"), {test::video("A.mov", "10:00:00:24", 60)}, {slate}), Offsets{-0.96})
        << "frame 24 does not exist at 24";
}

TEST(Corrections, AreCheckedAsTheyAreTyped) {
    const auto message = [](std::optional<std::string> offset, std::optional<std::string> date,
                            const std::optional<std::string>& rate) -> std::string {
        try {
            SourceCorrections::fromTexts(std::move(offset), std::move(date), rate);
            return "";
        } catch (const CorrectionError& error) {
            return error.what();
        }
    };
    EXPECT_EQ(message("-01:00:00:24", "2024-02-29", "25"), "");
    EXPECT_EQ(message("01:00:00;02", {}, "fps29_97d"), "");
    for (const char* offset : {"", "-", "1", "01:00:00", "01:60:00:00", "24:00:00:00", "01:00:00:120",
                               "1 00:00:00:00", "01:00:00:00.5", "--01:00:00:00"})
        EXPECT_NE(message(offset, {}, {}), "") << offset;
    for (const char* date :
         {"", "2024-02-30", "24-02-03", "x024-02-03", "2024-2-3", "2024/02/03", "2024-02-03T10"})
        EXPECT_NE(message({}, date, {}), "") << date;
    EXPECT_NE(message({}, {}, "fast"), "");
    EXPECT_NE(message("00:00:00:25", {}, "25").find("frames go to 24"), std::string::npos);
    const SourceCorrections late{.soundOffset = "00:00:01:24"};
    EXPECT_THROW(MatchRules::of(automatic, late, TimecodeFrameRate::fps24), CorrectionError);
    for (const double seconds : {-3600.0, 3603.6, 0.2, -0.04})
        EXPECT_NEAR(SourceCorrections{.soundOffset = offsetText(seconds, TimecodeFrameRate::fps23_976)}
                        .soundOffsetSeconds(TimecodeFrameRate::fps23_976),
                    seconds, 0.03);
    const SourceCorrections all = SourceCorrections::fromTexts("-00:00:01:00", "2024-05-17", "29.97DF");
    EXPECT_EQ(fromJSON<SourceCorrections>(toJSON(all)), all);
    EXPECT_EQ(fromJSON<SourceCorrections>(
                  JSON::parse(R"({"soundOffset":"x","soundDate":7,"timecodeRate":"fps7"})")),
              SourceCorrections());
}

} // namespace
} // namespace orvane
