#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"

#include "OrvaneSyncCore/Services/Matching/TakeMembership.h"
#include "OrvaneSyncCore/Services/Matching/UnitNearness.h"
#include "Platform/Text.h"
#include "Support/Assets.h"
#include "Support/RandomSeed.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

namespace orvane {
namespace {

using test::audio;
using test::video;

const SyncEngine engine;

MediaAsset counted(MediaAsset recording, std::uint64_t samples, std::optional<double> sampleRate) {
    recording.bextTimeReference = samples;
    recording.sampleRate = sampleRate;
    return recording;
}

MediaAsset offspeed(MediaAsset clip, double sensor, double project) {
    clip.sensorFrameRate = sensor;
    clip.projectFrameRate = project;
    return clip;
}

SyncGroup matched(const MediaAsset& picture, const std::vector<MediaAsset>& recordings) {
    return engine.match({picture}, recordings).front();
}

std::vector<std::string> names(const std::vector<AudioMatch>& matches) {
    std::vector<std::string> result;
    for (const AudioMatch& match : matches) result.push_back(match.audio->filename);
    return result;
}

TEST(SyncEngine, placesFilesOnTheAxis) {
    const MediaAsset ten = video("a.mov", "01:00:00:00", 10), sound = audio("a.wav", "01:00:00:00", 10);
    MediaAsset silent = ten;
    silent.durationSeconds.reset();
    MediaAsset atProjectRate = video("a.mov", "00:00:01:12");
    atProjectRate.projectFrameRate = 24;
    const double none = std::numeric_limits<double>::quiet_NaN();
    const auto check = [&](const char* name, const MediaAsset& asset, std::optional<double> fallback,
                           std::optional<double> start, std::optional<double> end) {
        const auto range = SyncEngine::tcRange(asset, fallback);
        ASSERT_EQ(range.has_value(), start.has_value()) << name;
        if (!range) return;
        EXPECT_DOUBLE_EQ(range->startSeconds, *start) << name;
        EXPECT_DOUBLE_EQ(range->endSeconds, *end) << name;
    };
    check("by its text", ten, {}, 3600, 3610);
    check("a sensor rate of zero is none", offspeed(ten, 0, 24), {}, 3600, 3610);
    check("nor is one below it", offspeed(ten, -24, 24), {}, 3600, 3610);
    check("the project's rate before the file's", atProjectRate, {}, 1.5, 61.5);
    check("the fallback before both", atProjectRate, 48, 1.25, 61.25);
    MediaAsset counting = atProjectRate;
    counting.timecodeFrameRate = TimecodeFrameRate::fps50;
    check("the timecode's own rate before all", counting, 48, 1.24, 61.24);
    counting = video("a.mov", "01:00:00:00", 10);
    counting.timecodeFrameRate = TimecodeFrameRate::fps29_97;
    check("without drop it falls behind the clock", counting, 29.97, 3603.6, 3613.6);
    check("a count of samples before the text", counted(audio("a.wav"), 96000, 48000), 30, 2, 62);
    check("48 kHz where no rate is stated", counted(audio("a.wav"), 96000, {}), {}, 2, 62);
    check("a count of 0 is none", counted(audio("a.wav", "00:00:05:00"), 0, 48000), {}, 5, 65);
    check("neither count nor text", counted(audio("a.wav", ""), 0, 48000), {}, {}, {});
    check("a count at no rate", counted(audio("a.wav"), 96000, 0.0), {}, {}, {});
    check("a malformed text is midnight", video("a.mov", "noon"), {}, 0, 60);
    check("no duration", silent, {}, {}, {});
    check("a duration of 0", video("a.mov", "01:00:00:00", 0), {}, {}, {});
    check("a duration that is no number", video("a.mov", "01:00:00:00", none), {}, {}, {});
    check("slow motion covers less", offspeed(ten, 120, 24), {}, 3600, 3602);
    check("2 percent is no slow motion", offspeed(ten, 24.5, 24), {}, 3600, 3610);
    check("sound has no slow motion", offspeed(sound, 120, 24), {}, 3600, 3610);
    EXPECT_EQ(SyncEngine::overlapDuration({0, 10}, {4, 20}), 6);
    EXPECT_EQ(SyncEngine::overlapDuration({0, 10}, {10, 20}), std::nullopt) << "they only touch";
}

TEST(SyncEngine, meetsTheDaysAround) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    MediaAsset filmedOn3rd = video("undated.mov");
    filmedOn3rd.contentCreatedDate = dateFromISO8601("2024-05-03T09:00:00Z");
    MediaAsset namedAndFiled = audio("240509.wav");
    namedAndFiled.contentCreatedDate = filmedOn3rd.contentCreatedDate;
    const auto check = [&](const char* name, const MediaAsset& video, const MediaAsset& audio, bool meet) {
        EXPECT_EQ(matched(video, {audio}).isMOS(), !meet) << name;
    };
    check("the same day", video("A_240503.mov"), audio("240503.wav"), true);
    check("the day before", video("A_240503.mov"), audio("240502.wav"), true);
    check("the day after", video("A_240430.mov"), audio("240501.wav"), true);
    check("two days apart", video("A_240503.mov"), audio("240501.wav"), false);
    check("a video without a day", video("A.mov"), audio("240503.wav"), true);
    check("a recording without a day", video("A_240503.mov"), audio("x.wav"), true);
    check("the day of the file", filmedOn3rd, audio("240504.wav"), true);
    check("the day of the file, too far", filmedOn3rd, audio("240505.wav"), false);
    check("the name before the file", filmedOn3rd, namedAndFiled, false);
    EXPECT_EQ(engine.matchWithinDay({video("A_240503.mov")}, {audio("240520.wav")})[0].audioMatches.size(),
              1U)
        << "within a day nobody asks for the day";
}

TEST(SyncEngine, decidesTheStatus) {
    struct Sound {
        const char* start;
        double seconds = 60;
    };
    const auto matchedStatus = MatchStatus::matched(), mos = MatchStatus::mos(),
               unmatched = MatchStatus::unmatched();
    const auto split = MatchStatus::splitRecording(2), ambiguous = MatchStatus::ambiguous(2);
    const auto check = [&](const char* name, double videoSeconds, const std::vector<Sound>& sounds,
                           const MatchStatus& status, std::size_t count) {
        std::vector<MediaAsset> recordings;
        for (const Sound& sound : sounds) recordings.push_back(audio("x.wav", sound.start, sound.seconds));
        const SyncGroup group = matched(video("a.mov", "10:00:00:00", videoSeconds), recordings);
        EXPECT_EQ(group.matchStatus, status) << name << ": " << group.matchStatus.label();
        EXPECT_EQ(group.audioMatches.size(), count) << name;
        EXPECT_EQ(group.clipName, "a.mov");
    };
    check("one frame in common", 1, {{"10:00:00:24"}}, matchedStatus, 1);
    check("they only touch", 1, {{"10:00:01:00"}}, unmatched, 0);
    check("exactly half as good", 60, {{"10:00:00:00"}, {"10:00:30:00"}}, matchedStatus, 2);
    check("less than half", 60, {{"10:00:00:00"}, {"10:00:30:03"}}, ambiguous, 2);
    check("a copy that was cut short", 60, {{"10:00:00:00"}, {"10:00:00:00", 20}}, matchedStatus, 2);
    check("one recording in parts", 60, {{"10:00:00:00", 50}, {"10:00:50:05"}}, split, 2);
    check("parts too far apart", 60, {{"10:00:00:00", 50}, {"10:00:51:00"}}, ambiguous, 2);
    check("sounds without a place", 60, {{""}, {"10:00:00:00", 0}}, unmatched, 0);
    MediaAsset wild = audio("b.wav");
    wild.ixmlData = IXMLData{};
    wild.ixmlData->wildTrack = "true";
    struct Names {
        const char* name;
        MediaAsset video, audio;
        MatchStatus status;
    };
    for (const Names& test : {
             Names{"room tone, by name", video("a.mov"), audio("SC1_AMB.wav"), unmatched},
             Names{"room tone, by the recorder's flag", video("a.mov"), wild, unmatched},
             Names{"without sound, says the name", video("clip_mos_01.mov"), wild, mos},
             Names{"no word of its own", video("clipmos01.mov"), wild, unmatched},
             Names{"sound all the same", video("clip_mos_01.mov"), audio("b.wav"), matchedStatus},
             Names{"no place is never without sound", video("clip_mos.mov", ""), wild, unmatched},
         })
        EXPECT_EQ(matched(test.video, {test.audio}).matchStatus, test.status) << test.name;
}

TEST(SyncEngine, aligns) {
    const SyncGroup group =
        matched(video("a.mov", "10:00:00:00", 60),
                {audio("late.wav", "10:00:10:00", 60), audio("early.wav", "09:59:58:00", 62)});
    ASSERT_EQ(names(group.audioMatches), (std::vector<std::string>{"early.wav", "late.wav"})) << "best first";
    EXPECT_EQ(group.audioMatches[0].syncOffsetSeconds, -2);
    EXPECT_EQ(group.audioMatches[0].overlapDurationSeconds, 60);
    EXPECT_EQ(group.audioMatches[1].syncOffsetSeconds, 10);
    EXPECT_EQ(group.audioMatches[1].overlapDurationSeconds, 50);
    EXPECT_EQ(group.syncMethod, SyncMethod::timecode);

    const SyncGroup slow =
        matched(offspeed(video("a.mov", "10:00:00:00", 10), 120, 24), {audio("x.wav", "10:00:01:00")});
    EXPECT_EQ(slow.syncMethod, SyncMethod::clap);
    EXPECT_EQ(slow.audioMatches.at(0).overlapDurationSeconds, 1);
    EXPECT_TRUE(matched(offspeed(video("a.mov", "10:00:00:00", 10), 120, 24), {audio("x.wav", "10:00:03:00")})
                    .isMOS());
}

TEST(SyncEngine, keepsTheOrderOfEquals) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    const std::vector<MediaAsset> audios{audio("undated.wav"), audio("240503_b.wav"), audio("240502_c.wav"),
                                         audio("other.wav"), audio("240503_a.wav")};
    using Names = std::vector<std::string>;
    EXPECT_EQ(names(matched(video("A_240503.mov"), audios).audioMatches),
              (Names{"240503_b.wav", "240502_c.wav", "240503_a.wav", "undated.wav", "other.wav"}))
        << "dated ones first";
    EXPECT_EQ(names(matched(video("A.mov"), audios).audioMatches),
              (Names{"undated.wav", "240503_b.wav", "240502_c.wav", "other.wav", "240503_a.wav"}))
        << "as they came";

    MediaAsset first = video("Clip 2.mov"), second = video("Clip 2.mov");
    const SyncGroupList groups = engine.match({video("clip 10.mov"), first, second, video("Clip 1.mov")}, {});
    std::vector<std::string> order;
    for (const SyncGroup& group : groups) order.push_back(group.video.filename);
    EXPECT_EQ(order, (Names{"Clip 1.mov", "Clip 2.mov", "Clip 2.mov", "clip 10.mov"}));
    EXPECT_EQ(groups[1].video.id, first.id) << "equal names keep their order";
    EXPECT_EQ(engine.matchWithinDay({second, first}, {})[0].video.id, second.id)
        << "within a day nothing is sorted";
    EXPECT_TRUE(engine.match({}, audios).empty());
}

/// A minute of picture, over which one recorder filled several files and another one wrote one file.
TEST(SyncEngine, aRecordingInPartsCountsAsOne) {
    const auto by = [](const char* recorder, MediaAsset file) {
        file.bextOriginator = recorder;
        return file;
    };
    const std::vector<MediaAsset> parts{by("A", audio("T_1.wav", "10:00:00:00", 20)),
                                        by("A", audio("T_2.wav", "10:00:20:00", 15)),
                                        by("A", audio("T_3.wav", "10:00:35:00", 25))};
    using Names = std::vector<std::string>;
    const auto list = [](const SyncGroup& group) {
        Names all = names(group.audioMatches);
        all.push_back(group.matchStatus.label());
        return all;
    };
    struct Case {
        const char* name;
        std::vector<MediaAsset> others;
        MatchStatus status;
        Names names;
    };
    const std::vector<Case> cases{
        {"a single file that is longer than each part",
         {by("B", audio("B.wav", "10:00:05:00", 50))},
         MatchStatus::matched(),
         {"T_3.wav", "T_1.wav", "T_2.wav", "B.wav"}},
        {"one that covers all, of a later name",
         {by("B", audio("U.wav"))},
         MatchStatus::matched(),
         {"T_3.wav", "T_1.wav", "T_2.wav", "U.wav"}},
        {"less than half of the take",
         {by("B", audio("B.wav", "10:00:05:00", 25))},
         MatchStatus::ambiguous(4),
         {"T_3.wav", "T_1.wav", "T_2.wav", "B.wav"}},
        {"two others that are one",
         {by("B", audio("B_1.wav", "10:00:00:00", 20)), by("B", audio("B_2.wav", "10:00:20:00", 35))},
         MatchStatus::matched(),
         {"T_3.wav", "T_1.wav", "T_2.wav", "B_2.wav", "B_1.wav"}},
        {"nothing else", {}, MatchStatus::splitRecording(3), {"T_3.wav", "T_1.wav", "T_2.wav"}},
    };
    for (Case one : cases) {
        one.others.insert(one.others.begin(), parts.begin(), parts.end());
        one.names.push_back(one.status.label());
        EXPECT_EQ(list(matched(video("A.mov"), one.others)), one.names) << one.name;
    }
    const std::vector<MediaAsset> lost{parts[0], by("A", audio("T_3.wav", "10:00:25:00", 35)),
                                       by("B", audio("B.wav", "10:00:05:00", 40))};
    EXPECT_EQ(list(matched(video("A.mov"), lost)),
              (Names{"T_3.wav", "T_1.wav", "B.wav", MatchStatus::matched().label()}))
        << "the part between two others was lost";
    const std::vector<MediaAsset> crossing{
        audio("K_5.wav", "10:00:05:00", 40), audio("L_5.wav", "10:00:00:00", 45),
        audio("M_5.wav", "10:00:45:00", 1), audio("N.wav", "10:00:45:00", 15),
        audio("Z.wav", "10:00:02:00", 50)};
    EXPECT_EQ(list(matched(video("A.mov"), crossing)).front(), "Z.wav")
        << "K goes on in M, as L does, and not in N, which would make it longer";
}

TEST(SyncEngine, readsThePartsOfARecordingAtOneRate) {
    MediaAsset unrated = audio("x.wav", "10:00:00:00");
    unrated.frameRate.reset();
    MediaAsset late = audio("y.wav", "11:00:00:00"), early = audio("z.wav", "09:00:00:00");
    late.frameRate = 30;
    early.projectFrameRate = 48;
    MediaAsset countedLate = counted(late, 1, 48000), countedUnrated = counted(unrated, 1, 48000);
    using List = std::vector<MediaAsset>;
    EXPECT_EQ(SyncEngine::sharedFallbackFrameRate({}), 24);
    EXPECT_EQ(SyncEngine::sharedFallbackFrameRate(List{unrated, late, early}), 48)
        << "the earliest with a rate; the project's first";
    EXPECT_EQ(SyncEngine::sharedFallbackFrameRate(List{unrated, early, countedLate}), 30)
        << "one with a count goes first";
    EXPECT_EQ(SyncEngine::sharedFallbackFrameRate(List{late, early, countedUnrated}), 48)
        << "unless it knows no rate";

    // Frame 24 of 50 is half a second; read at its own 25 it would be nearly a whole one.
    MediaAsset head = audio("1.wav", "10:00:00:00", 10), tail = audio("2.wav", "10:00:10:24", 10);
    head.frameRate = 50;
    const auto parts = [&] { return std::vector<AudioMatch>{{tail, 0, 1}, {head, 0, 1}}; };
    EXPECT_TRUE(SyncEngine::isSplitRecording(parts()));
    tail.frameRate = head.frameRate = 25;
    EXPECT_FALSE(SyncEngine::isSplitRecording(parts()));
    tail.startTimecodeString.reset();
    EXPECT_FALSE(SyncEngine::isSplitRecording(parts())) << "a part without a place";
}

std::string clock(int seconds) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%02d:%02d:%02d:00", seconds / 3600, seconds / 60 % 60,
                  seconds % 60);
    return text.data();
}

/// Properties that hold for any set of files.
TEST(SyncEngine, holdsItsPromisesForACrowd) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    const auto seed = test::randomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const auto below = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
    const auto made = [&](AssetKind kind, int number, int day) {
        const std::string date = day == 0 ? "" : "_24050" + std::to_string(day);
        return test::asset(kind, "F" + std::to_string(number) + date + ".x",
                           below(20) == 0 ? "" : clock(36000 + below(600)), below(90));
    };
    std::vector<MediaAsset> videos, audios;
    for (int i = 0; i < 120; ++i) videos.push_back(made(AssetKind::video, i, below(10)));
    for (int i = 0; i < 200; ++i) audios.push_back(made(AssetKind::audio, i, below(10)));

    const auto picture = [](const SyncGroup& group) {
        std::vector<std::pair<UUID, double>> matches;
        for (const AudioMatch& match : group.audioMatches)
            matches.emplace_back(match.audio->id, match.syncOffsetSeconds);
        return std::pair(group.matchStatus.label(), matches);
    };
    std::map<UUID, decltype(picture(std::declval<SyncGroup>()))> before;
    std::set<UUID> ids;
    for (const SyncGroup& group : engine.match(videos, audios)) {
        EXPECT_TRUE(ids.insert(group.id).second);
        const auto range = SyncEngine::tcRange(group.video);
        std::size_t partners = 0;
        for (const MediaAsset& recording : audios) {
            const auto other = SyncEngine::tcRange(recording);
            const auto a = group.video.shootDay(), b = recording.shootDay();
            const bool near =
                !a || !b || (*a - *b <= std::chrono::days{1} && *b - *a <= std::chrono::days{1});
            if (range && other && near && SyncEngine::overlapDuration(*range, *other)) ++partners;
        }
        EXPECT_EQ(group.audioMatches.size(), partners) << group.video.filename;
        std::vector<TakeMembership::Candidate> files;
        for (const AudioMatch& match : group.audioMatches)
            files.push_back({&*match.audio, *SyncEngine::tcRange(match.audio)});
        double heard = 1e-6; // tolerance for the rounding of sums
        for (const auto& member : TakeMembership::of(files).members)
            if (member.lane == 0) heard += group.audioMatches[member.candidate].overlapDurationSeconds;
        for (const AudioMatch& match : group.audioMatches) {
            EXPECT_GT(match.overlapDurationSeconds, 0);
            EXPECT_LE(match.overlapDurationSeconds, heard) << "the take that is heard covers most";
            EXPECT_EQ(range->startSeconds + match.syncOffsetSeconds,
                      SyncEngine::tcRange(match.audio)->startSeconds);
        }
        before.emplace(group.video.id, picture(group));
    }
    ASSERT_EQ(before.size(), videos.size());

    // Each video matches the same alone, and with the recordings of far days moved to the front.
    for (const MediaAsset& clip : videos) {
        const auto day = clip.shootDay();
        std::vector<MediaAsset> shuffled = audios;
        std::ranges::stable_partition(shuffled, [&](const MediaAsset& recording) {
            const auto other = recording.shootDay();
            return day && other &&
                   (*other - *day > std::chrono::days{2} || *day - *other > std::chrono::days{2});
        });
        EXPECT_EQ(picture(matched(clip, shuffled)), before.at(clip.id)) << clip.filename;
    }
}

/// For a clip without a date, two days of shooting with free-run timecode look the same.
TEST(SyncEngine, theDayOfTheHeaderRanksEqualOverlaps) {
    const auto on = [](MediaAsset asset, int day) {
        asset.contentCreatedDate = calendar::date({2024, 5, day, 12, 0, 0});
        return asset;
    };
    const std::vector<MediaAsset> recordings{
        audio("undated.wav", "01:00:00:00", 100), on(audio("other.wav", "01:00:00:00", 100), 2),
        on(audio("eve.wav", "01:00:00:00", 100), 16), on(audio("own.wav", "01:00:00:00", 100), 17),
        on(audio("short.wav", "01:00:00:00", 30), 17)};
    MediaAsset clip = video("a.mov", "01:00:00:00", 60);
    using Names = std::vector<std::string>;
    EXPECT_EQ(names(matched(clip, recordings).audioMatches),
              (Names{"undated.wav", "other.wav", "eve.wav", "own.wav", "short.wav"}));
    clip.headerDate = calendar::date({2024, 5, 17, 20, 0, 0});
    EXPECT_EQ(names(matched(clip, recordings).audioMatches),
              (Names{"own.wav", "eve.wav", "undated.wav", "other.wav", "short.wav"}))
        << "none is left out, and the best overlap comes first";
    clip = on(clip, 2);
    EXPECT_EQ(names(matched(clip, recordings).audioMatches), (Names{"other.wav", "undated.wav"}))
        << "a date of the content decides alone";
}

TEST(SyncEngine, clipsStandInTheOrderOfTheirNamesHoweverTheCardsInterlock) {
    for (const unsigned seed : test::seeds(20)) {
        std::mt19937 random(seed);
        const auto any = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
        std::vector<MediaAsset> videos;
        const int cards = 1 + any(5);
        for (int card = 0; card < cards; ++card)
            for (int clip = any(200); clip < 300; clip += 1 + any(2))
                videos.emplace_back(
                    FileURL{"/c" + std::to_string(card) + "/A" + std::to_string(clip) + ".mov"},
                    AssetKind::video);
        const SyncGroupList groups = SyncEngine().match(videos, {});
        std::ranges::stable_sort(videos, {}, [](const MediaAsset& one) {
            return platform::text::localizedStandardSortKey(one.filename);
        });
        for (std::size_t i = 0; i < videos.size(); ++i)
            ASSERT_EQ(groups[i].video.url.path, videos[i].url.path) << "seed " << seed;
    }
}

TEST(SyncEngine, theSoundOfAnotherUnitIsNoRivalOfTheOwnOne) {
    for (const bool coversAll : {true, false}) {
        std::vector<MediaAsset> sounds{audio("T.wav", "09:59:55:00", coversAll ? 30 : 18),
                                       audio("U.wav", "10:00:09:00", 30)};
        MediaAsset clip = video("A.mov", "10:00:00:00", 15);
        clip.url.path = "/S/UNIT1/CAM/A.mov";
        sounds[0].url.path = "/S/UNIT1/SND/T.wav";
        sounds[1].url.path = "/S/UNIT3/SND/U.wav";
        EXPECT_EQ(matched(clip, sounds).matchStatus,
                  coversAll ? MatchStatus::matched() : MatchStatus::ambiguous(2));
        sounds[1].url.path = "/S/UNIT1/SND2/U.wav";
        sounds[0].url.path = "/S/UNIT1/SND1/T.wav";
        EXPECT_EQ(matched(clip, sounds).matchStatus, MatchStatus::ambiguous(2)) << "of the own unit, both";
    }
}

TEST(UnitNearness, isGreaterWithinTheFoldersOfAUnit) {
    struct Case {
        std::string clip, own, other;
    };
    for (const auto& [clip, own, other] :
         {Case{"/S/U1/CAM", "/S/U1/SND", "/S/U2/SND"}, Case{"/S/CAM/U1", "/S/SND/U1", "/S/SND/U2"},
          Case{"/S/A_CAM/0517", "/S/A_SOUND/0517", "/S/B_SOUND/0517"}}) {
        const auto nearness = [&](const std::string& folder) {
            return UnitNearness::of(MediaAsset({clip + "/A.mov"}, AssetKind::video),
                                    MediaAsset({folder + "/T.wav"}, AssetKind::audio));
        };
        EXPECT_GT(nearness(own), nearness(other)) << clip;
        EXPECT_EQ(nearness("/S/SND/X"), nearness("/S/SND/Y")) << clip;
        EXPECT_EQ(nearness("/S/X/Cam"), nearness("/S/X/Y")) << clip << ": every unit has cameras";
    }
}

} // namespace
} // namespace orvane
