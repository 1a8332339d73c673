#include "OrvaneSyncCore/Services/Diagnosis/SyncDoubts.h"

#include "OrvaneSyncCore/Services/Matching/Recordings.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"
#include "Support/Assets.h"
#include "Support/RandomSeed.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

namespace orvane {
namespace {

using Kind = SyncDoubt::Kind;
using Random = std::mt19937;

double within(Random& random, double from, double to) {
    return std::uniform_real_distribution<double>(from, to)(random);
}

std::uint64_t samples(double seconds) { return static_cast<std::uint64_t>(std::llround(seconds * 48000)); }

MediaAsset recordingAt(const std::string& path, double start, double seconds) {
    MediaAsset made(FileURL{path}, AssetKind::audio);
    made.bextTimeReference = samples(start);
    made.sampleRate = 48000;
    made.durationSeconds = seconds;
    return made;
}

MediaAsset clipAt(const std::string& path, double start, double seconds,
                  TimecodeFrameRate rate = TimecodeFrameRate::fps25) {
    MediaAsset made(FileURL{path}, AssetKind::video);
    made.startTimecodeString = TimecodeUtils::secondsToTC(start, rate);
    made.timecodeFrameRate = rate;
    made.durationSeconds = seconds;
    return made;
}

/// A shoot, its matching and its doubts.
struct Shot {
    std::vector<MediaAsset> videos, audios;
    std::map<std::string, std::string> soundOf; ///< by name of the clip; of clips that have sound

    SyncGroupList groups = {};
    SyncDoubts doubts = {};

    void diagnose(const MatchRules& rules = {}, TrimMode trim = TrimMode::commonDuration) {
        groups = SyncEngine().match(videos, audios, rules);
        FileNames names;
        for (const MediaAsset& file : videos) names.add(file);
        for (const MediaAsset& file : audios) names.add(file);
        doubts = SyncDoubts::of({groups, audios, rules, trim, {}, names});
        if (!settlesAll && locks.empty()) return;
        for (SyncGroup group : groups) {
            if (settlesAll && group.matchStatus.kind == MatchStatus::Kind::ambiguous)
                group.matchStatus = MatchStatus::manual();
            group.isLocked = group.video.filename == locks;
            groups.update(group.id, [&](SyncGroup& own) { own = group; });
        }
        doubts = SyncDoubts::of({groups, audios, rules, trim, {}, names});
    }
    bool settlesAll = false; ///< whatever is ambiguous, by what it lists first
    std::string locks = {};  ///< the clip of this name
    void date(std::vector<MediaAsset>& files, const char* day, std::size_t from = 0) {
        for (std::size_t i = from; i < files.size(); ++i)
            files[i].contentCreatedDate = dateFromISO8601(std::string(day) + "T00:00:00Z");
    }
    int count(Kind kind) const {
        int found = 0;
        for (const auto& [id, own] : doubts.byGroup)
            found += std::ranges::count(own, kind, &SyncDoubt::kind) > 0;
        return found;
    }
    std::optional<CardDoubt> card(Kind kind) const {
        for (const CardDoubt& card : doubts.cards)
            if (card.doubt.kind == kind) return card;
        return std::nullopt;
    }
};

/// A day of takes with pauses between them. `soundShare`: of the clips.
void shootADay(Shot& shot, Random& random, int takes, const std::string& name, double soundShare = 1) {
    double at = within(random, 7, 9) * 3600;
    for (int take = 1; take <= takes; ++take) {
        const double seconds = within(random, 20, 90);
        const std::string number = name + "_" + std::to_string(take);
        shot.videos.push_back(clipAt("/CAM/A" + number + ".mov", at, seconds));
        if (within(random, 0, 1) < soundShare) {
            const double before = within(random, 2, 15), after = within(random, 2, 15);
            shot.audios.push_back(
                recordingAt("/SOUND/T" + number + ".wav", at - before, seconds + before + after));
            shot.soundOf["A" + number + ".mov"] = "T" + number + ".wav";
        }
        at += seconds + within(random, 40, 900);
    }
}

enum class Dates { all, none, half, headersOnly, headersFarWest, headersAlone, wrongRecorder, wrongCamera };

TEST(SyncDoubts, TwoDaysNeverMixSilently) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    const Date first = *dateFromISO8601("2024-05-17T00:00:00Z");
    int wrongInAll = 0;
    for (const unsigned seed : test::seeds(20))
        for (const Dates dates :
             {Dates::all, Dates::none, Dates::half, Dates::headersOnly, Dates::headersFarWest,
              Dates::headersAlone, Dates::wrongRecorder, Dates::wrongCamera}) {
            Random random(seed);
            Shot shot;
            const bool isFarWest = dates == Dates::headersFarWest; // headers in UTC, 8 hours ahead
            const bool hasHeaders = isFarWest || dates == Dates::headersOnly || dates == Dates::headersAlone;
            const int takes = dates == Dates::headersAlone ? 5 : 60; // too few for recordings to collide
            shootADay(shot, random, takes, "1", dates == Dates::all ? 1 : 0.85);
            shootADay(shot, random, takes, "2", dates == Dates::all ? 1 : 0.85);
            const auto date = [&](std::vector<MediaAsset>& files, bool isWrong) {
                for (MediaAsset& file : files) {
                    const bool isDated =
                        dates != Dates::none && (dates != Dates::half || within(random, 0, 1) < 0.5);
                    const auto start = file.bextTimeReference
                                           ? static_cast<double>(*file.bextTimeReference) / 48000
                                           : TimecodeUtils::tcToSeconds(*file.startTimecodeString, 25);
                    const int day = (file.filename[1] == '2' ? 1 : 0) + (isWrong ? 1 : 0);
                    const Date when =
                        first + std::chrono::hours(24 * day) + std::chrono::seconds(std::llround(start));
                    const bool inHeader = hasHeaders && file.kind == AssetKind::video;
                    const auto zone = std::chrono::hours(isFarWest && inHeader ? 8 : 0);
                    if (dates == Dates::headersAlone && !inHeader) continue;
                    if (isDated) (inHeader ? file.headerDate : file.contentCreatedDate) = when + zone;
                }
            };
            date(shot.videos, dates == Dates::wrongCamera);
            date(shot.audios, dates == Dates::wrongRecorder);
            const auto given = within(random, 0, 1) < 0.5 ? std::optional(dayNumber(first)) : std::nullopt;
            shot.settlesAll = within(random, 0, 1) < 0.5;
            shot.diagnose(dates == Dates::all ? MatchRules() : MatchRules{.soundDay = given});
            int wrong = 0, silent = 0;
            for (const SyncGroup& group : shot.groups) {
                if (group.isMOS()) continue;
                const auto truth = shot.soundOf.find(group.video.filename);
                if (truth != shot.soundOf.end() && truth->second == group.primaryAudio()->filename) continue;
                ++wrong;
                const auto own = shot.doubts.byGroup.find(group.id);
                const auto isOfDays = [](const SyncDoubt& doubt) {
                    return doubt.kind == Kind::otherDay || doubt.kind == Kind::otherDateFits ||
                           doubt.kind == Kind::ambiguous;
                };
                if (own == shot.doubts.byGroup.end() || std::ranges::none_of(own->second, isOfDays)) ++silent;
            }
            wrongInAll += wrong;
            EXPECT_EQ(silent, 0) << "seed " << seed << ", dates " << static_cast<int>(dates)
                                 << given.has_value() << shot.settlesAll;
            if (dates != Dates::all) continue;
            EXPECT_EQ(wrong, 0);
            EXPECT_TRUE(shot.doubts.byGroup.empty() && shot.doubts.cards.empty())
                << "a clean shoot: " << shot.doubts.byGroup.begin()->second.front().message;
        }
    EXPECT_GT(wrongInAll, 0) << "nothing was mixed up, so nothing was looked at";
}

TEST(SyncDoubts, FindsTheClockOfACard) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    for (const unsigned seed : test::seeds(30))
        for (const double offset : {-3600.0, 1800.0, -36.0, 7200.0}) {
            Random random(seed);
            Shot shot;
            const int takes = 5 + static_cast<int>(within(random, 0, 30));
            shootADay(shot, random, takes, "1");
            for (MediaAsset& file : shot.audios)
                *file.bextTimeReference -= samples(1) * static_cast<int>(offset);
            shot.diagnose();
            const auto card = shot.card(Kind::constantOffset);
            ASSERT_TRUE(card) << "seed " << seed << ", " << offset;
            for (const SyncGroup& group : shot.groups)
                EXPECT_TRUE(group.isMOS() || shot.doubts.has(group.id, {Kind::constantOffset}))
                    << "silent sound by chance, seed " << seed << ", " << group.video.filename;
            const std::string option = "--sound-offset ";
            ASSERT_TRUE(card->doubt.cure.starts_with(option));
            const auto end = card->doubt.cure.find("; then check a clap");
            EXPECT_EQ(end == std::string::npos, card->doubt.message.find("is known to") == std::string::npos);
            const std::string cure = card->doubt.cure.substr(0, end);
            Shot cured = shot;
            cured.diagnose(MatchRules::of(MatchingDays::automatic,
                                          {.soundOffset = cure.substr(option.size())},
                                          TimecodeFrameRate::fps25));
            EXPECT_EQ(std::ranges::count_if(cured.groups, [](const auto& group) { return group.isMOS(); }), 0)
                << "seed " << seed << ": " << card->doubt.message;
            if (std::fmod(offset, 1800) == 0) {
                EXPECT_EQ(card->doubt.cure, option + offsetText(offset, TimecodeFrameRate::fps25))
                    << "seed " << seed << ": whole hours are preferred";
            }
        }
}

TEST(SyncDoubts, FindsTheClockOfOneCardAmongOthers) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    constexpr double hour = 3600;
    const auto takes = [](Shot& shot, const char* day, double from, const std::string& card, double ahead,
                          double before = 10) {
        const auto clips = shot.videos.size(), sounds = shot.audios.size();
        for (int i = 0; i < 12; ++i) {
            const double at = from * hour + 600.0 * i + (7.0 + static_cast<double>(sounds % 5)) * i * i;
            const std::string name = card + "_" + std::to_string(i);
            shot.videos.push_back(clipAt("/CAM/" + name + ".mov", at, 60));
            shot.audios.push_back(
                recordingAt("/S/" + card + "/" + name + ".wav", at - before + ahead * hour, 60 + 2 * before));
        }
        if (day == nullptr) return;
        shot.date(shot.videos, day, clips);
        shot.date(shot.audios, day, sounds);
    };
    const auto cureOf = [](Shot& shot, const MatchRules& rules = {}) {
        shot.diagnose(rules);
        const auto card = shot.card(Kind::constantOffset);
        return card ? card->doubt.cure : "none";
    };
    Shot one, longer, undated, nine, dayOff, film;
    takes(one, nullptr, 9, "A", 0);
    takes(one, nullptr, 13, "B", -3);
    EXPECT_EQ(cureOf(one), "--sound-offset 03:00:00:00 in a scan of this card alone (--exclude 'A')");
    takes(longer, nullptr, 9, "A", 1, -10);
    EXPECT_EQ(cureOf(longer), "--sound-offset -01:00:00:00") << "the camera rolls longer";
    for (const char* day : {"2024-05-17", "2024-05-18", "2024-05-19"}) {
        takes(undated, day, 9, day, 1);
        takes(nine, day, 9, day, 9);
        takes(nine, day, 17, day + std::string("e"), 9);
        takes(dayOff, day, 9, day, -1);
    }
    for (MediaAsset& video : undated.videos) video.contentCreatedDate.reset();
    for (Shot* shot : {&undated, &nine})
        for (MediaAsset& audio : shot->audios) audio.url.path = "/S/" + audio.filename;
    EXPECT_EQ(cureOf(undated), "--sound-offset -01:00:00:00") << "three days of one card";
    for (MediaAsset& audio : nine.audios)
        if (const auto aDay = samples(24 * hour); *audio.bextTimeReference >= aDay) {
            *audio.bextTimeReference -= aDay;
            *audio.contentCreatedDate += std::chrono::hours(24);
        }
    EXPECT_EQ(cureOf(nine), "--sound-offset -09:00:00:00") << "its midnight is another one";
    for (MediaAsset& audio : dayOff.audios) *audio.contentCreatedDate -= std::chrono::hours(24);
    EXPECT_EQ(cureOf(dayOff, {.soundOffsetSeconds = 20 * hour})
                  .find("--sound-date 2024-05-17 --sound-offset 01:00:00:00"),
              0U)
        << "25 hours";
    for (const double ahead : {1.0, 0.0}) { // of a second camera
        Shot second;
        takes(second, "2024-05-17", 9, "A", 0);
        for (int i = 0; i < 12; ++i) {
            const double start = TimecodeUtils::tcToSeconds(*second.videos[i].startTimecodeString, 25);
            second.videos.push_back(
                clipAt("/B CAM/B" + std::to_string(i) + ".mov", start + ahead * hour, 60));
        }
        second.date(second.videos, "2024-05-17");
        const bool isHour = ahead == 1;
        EXPECT_EQ(cureOf(second),
                  isHour ? "--sound-offset 01:00:00:00 in a scan of this card alone (--exclude 'CAM')"
                         : "none")
            << ahead;
    }
    takes(film, nullptr, 9, "A", 1);
    for (MediaAsset& video : film.videos) {
        const double start = TimecodeUtils::tcToSeconds(*video.startTimecodeString, 25);
        video.startTimecodeString = TimecodeUtils::secondsToTC(start, TimecodeFrameRate::fps23_976);
    }
    EXPECT_EQ(cureOf(film, {.timecodeRate = TimecodeFrameRate::fps23_976}), "--sound-offset -00:59:56:10")
        << "counted as the option is read";
}

TEST(SyncDoubts, TakesThatRepeatEachHourHideAWrongClock) {
    struct Case {
        const char* name;
        int soundFrom, soundTo;  ///< hours with a recording, of 0 to 4 with a clip each
        double recorder, second; ///< hours that the recorder and a second camera are ahead; 0: there is none
        int doubted;
        double soundSeconds = 80;
        bool isConfirmed = false;
        const char* cure = "--sound-offset -01:00:00:00 if";
    };
    const std::vector<Case> cases{
        {"the recorder an hour ahead", 0, 4, 1, 0, 5},
        {"the same, a clip checked by ear", 0, 4, 1, 0, 0, 80, true},
        {"right, all with sound", 0, 4, 0, 0, 0},
        {"right, the first sound lost", 1, 4, 0, 0, 0},
        {"right, sound went on behind the last clip", 0, 6, 0, 0, 0},
        {"right, a recorder that ran all day from the second clip on", 1, 8, 0, 0, 0, 3600},
        {"a second camera an hour ahead", 0, 4, 0, 1, 5, 80, false, "--sound-offset 01:00:00:00 in a scan"},
    };
    for (const Case& one : cases) {
        Shot shot;
        for (int hour = one.soundFrom; hour <= one.soundTo; ++hour)
            shot.audios.push_back(recordingAt("/S/T" + std::to_string(hour) + ".wav",
                                              35990 + 3600 * (hour + one.recorder), one.soundSeconds));
        for (int hour = 0; hour < 5; ++hour) {
            const std::string name = std::to_string(hour) + ".mov";
            shot.videos.push_back(clipAt("/CAM/A" + name, 36000 + 3600 * hour, 60));
            if (one.second != 0)
                shot.videos.push_back(clipAt("/B/B" + name, 36000 + 3600 * (hour + one.second), 60));
        }
        shot.locks = one.isConfirmed ? "A2.mov" : "";
        shot.diagnose();
        EXPECT_EQ(shot.count(Kind::constantOffset), one.doubted) << one.name;
        const auto card = shot.card(Kind::constantOffset);
        EXPECT_TRUE(!card || card->doubt.cure.starts_with(one.cure)) << one.name << ": " << card->doubt.cure;
    }
}

TEST(SyncDoubts, OffsetsByHandTellOfTheOtherClips) {
    struct Case {
        const char* name;
        std::vector<double> byHand; ///< of the first clips, seconds
        int locked, doubted;        ///< -1: none
    };
    const std::vector<Case> cases{
        {"a clock that is 2.4 s late", {-2.4, -2.38, -2.42}, -1, 3},
        {"two are no sign", {-2.5, -2.5}, -1, 0},
        {"each by another offset", {-2.5, 1, -0.8, 0.4}, -1, 0},
        {"nudges to the frame", {-0.04, -0.04, -0.04}, -1, 0},
        {"one is right where it is", {-2.5, -2.5, -2.5}, 5, 0},
    };
    for (const Case& one : cases) {
        Shot shot;
        for (int i = 0; i < 6; ++i) {
            shot.videos.push_back(clipAt("/CAM/A" + std::to_string(i) + ".mov", 36000 + 300 * i, 8));
            shot.audios.push_back(recordingAt("/S/T" + std::to_string(i) + ".wav", 35999.5 + 300 * i, 14));
        }
        shot.diagnose();
        EXPECT_EQ(shot.count(Kind::constantOffset), 0);
        for (int i = 0; i < 6; ++i)
            shot.groups.update(shot.groups[static_cast<std::size_t>(i)].id, [&](SyncGroup& group) {
                if (i < std::ssize(one.byHand))
                    group.manualAudioOffsetSeconds = one.byHand[static_cast<std::size_t>(i)];
                group.isLocked = i == one.locked;
            });
        shot.doubts = SyncDoubts::of({shot.groups, shot.audios, {}, TrimMode::noTrim, {}, FileNames()});
        EXPECT_EQ(shot.count(Kind::constantOffset), one.doubted) << one.name;
        const auto card = shot.card(Kind::constantOffset);
        EXPECT_TRUE(!card || card->doubt.cure.find("--sound-offset -00:00:02:10") != std::string::npos)
            << card->doubt.cure;
    }
}

TEST(SyncDoubts, ClaimsNoClockByChance) {
    int claimed = 0;
    for (const unsigned seed : test::seeds(200)) {
        Random random(seed);
        Shot shot;
        const int files = 3 + static_cast<int>(within(random, 0, 40));
        const double hours = within(random, 0.5, 24);
        for (int i = 0; i < files; ++i) {
            const std::string number = std::to_string(i);
            shot.videos.push_back(
                clipAt("/CAM/A" + number + ".mov", within(random, 0, hours * 3600), within(random, 10, 60)));
            shot.audios.push_back(recordingAt("/SOUND/T" + number + ".wav",
                                              1 + within(random, 0, hours * 3600), within(random, 20, 90)));
        }
        shot.diagnose();
        claimed += static_cast<int>(shot.doubts.cards.size());
    }
    EXPECT_EQ(claimed, 0);
}

TEST(SyncDoubts, FindsARateAndADate) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    Random random(7);
    Shot film, dated;
    shootADay(film, random, 30, "1");
    for (MediaAsset& video : film.videos) {
        // The labels count 23.976, and the file says 24.
        const double start = TimecodeUtils::tcToSeconds(*video.startTimecodeString, 25);
        video.startTimecodeString = TimecodeUtils::secondsToTC(start, TimecodeFrameRate::fps23_976);
        video.timecodeFrameRate = TimecodeFrameRate::fps24;
    }
    film.diagnose();
    ASSERT_TRUE(film.card(Kind::timecodeRate));
    EXPECT_EQ(film.card(Kind::timecodeRate)->doubt.cure, "--tc-rate 23.976");
    EXPECT_FALSE(film.card(Kind::constantOffset));

    shootADay(dated, random, 8, "1");
    for (MediaAsset& video : dated.videos) video.contentCreatedDate = dateFromISO8601("2024-05-17T12:00:00Z");
    for (MediaAsset& audio : dated.audios) audio.contentCreatedDate = dateFromISO8601("2000-01-01T12:00:00Z");
    dated.diagnose();
    ASSERT_TRUE(dated.card(Kind::otherDateFits));
    EXPECT_TRUE(dated.card(Kind::otherDateFits)
                    ->doubt.cure.starts_with("--sound-date 2024-05-17 in a scan of this day alone "
                                             "(--video '/CAM' --audio '/SOUND')"))
        << dated.card(Kind::otherDateFits)->doubt.cure;
    EXPECT_EQ(dated.card(Kind::otherDateFits)->groupIDs.size(), 8U);
    for (std::size_t i = 0; i < dated.videos.size(); ++i) { // a header in UTC changes its day among the clips
        dated.videos[i].contentCreatedDate.reset();
        dated.videos[i].headerDate = dateFromISO8601(i < 4 ? "2024-05-17T23:00:00Z" : "2024-05-18T01:00:00Z");
    }
    for (const char* given : {"2024-05-17T00:00:00Z", "2024-05-18T00:00:00Z"}) {
        dated.diagnose({.soundDay = dayNumber(*dateFromISO8601(given))});
        EXPECT_FALSE(dated.card(Kind::otherDateFits)) << given << " serves all clips";
    }

    Shot clean; // silent pictures of the first day, at hours of the second one's sound
    for (int i = 0; i < 16; ++i) {
        const bool isSecond = i >= 8;
        const double at = 36000 + 600 * (i % 8) + (isSecond ? 300 : 0);
        const std::string name = std::to_string(i);
        clean.videos.push_back(clipAt("/CAM/A" + name + ".mov", at, 60));
        clean.audios.push_back(recordingAt("/S/T" + name + ".wav", at - 10, 80));
        clean.date(clean.videos, isSecond ? "2024-05-18" : "2024-05-17", clean.videos.size() - 1);
        clean.date(clean.audios, isSecond ? "2024-05-18" : "2024-05-17", clean.audios.size() - 1);
        if (isSecond) clean.videos.push_back(clipAt("/BROLL/B" + name + ".mov", at + 5, 20));
        if (isSecond) clean.date(clean.videos, "2024-05-17", clean.videos.size() - 1);
    }
    clean.diagnose();
    EXPECT_EQ(clean.count(Kind::otherDateFits), 0);
}

TEST(SyncDoubts, TimecodeIsHeldAgainstTheDatesOfTheFiles) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    struct Clip {
        const char* folder;
        double timecode, header; ///< seconds since midnight; without timecode below 0
    };
    struct Case {
        const char* name;
        std::vector<Clip> clips;
        Kind kind;
        int doubted;
    };
    using Clips = std::vector<Clip>;
    const Clips usual{{"A", 36000, 36001}, {"A", 36300, 36301}, {"A", 36700, 36702}, {"A", 37200, 37200}};
    const auto with = [&](const Clips& more) {
        Clips all = usual;
        all.insert(all.end(), more.begin(), more.end());
        return all;
    };
    using enum Kind;
    const std::vector<Case> cases{
        {"time of day", usual, notTimeOfDay, 0},
        {"counted while the camera runs",
         {{"A", 36000, 36001}, {"A", 36008, 36301}, {"A", 36016, 36700}, {"A", 36024, 37100}},
         notTimeOfDay,
         4},
        {"two of such a card, and its headers in UTC",
         {{"A", 36000, 28801}, {"A", 36008, 29401}},
         notTimeOfDay,
         2},
        {"written anew, one after the other",
         {{"A", 36000, 72000}, {"A", 36300, 72009}, {"A", 36700, 72018}, {"A", 37200, 72027}},
         notTimeOfDay,
         0},
        {"written anew, in another order",
         {{"A", 36300, 72000}, {"A", 36000, 72900}, {"A", 37200, 73800}, {"A", 36700, 74700}},
         notTimeOfDay,
         0},
        {"one among others", with({{"B", 36900, 51500}}), notTimeOfDay, 1},
        {"another camera with its header in UTC", with({{"B", 36900, 29700}}), notTimeOfDay, 0},
        {"a phone", with({{"P", -1, 36310}}), noTimecode, 1},
        {"a drone that counts each clip from 0", with({{"P", 0, 36310}}), noTimecode, 1},
        {"a clip at midnight", with({{"P", 0, 86399}}), noTimecode, 0},
    };
    for (const Case& one : cases) {
        Shot shot;
        shot.audios.push_back(recordingAt("/S/T.wav", 35990, 3600));
        for (const Clip& clip : one.clips) {
            shot.videos.push_back(
                clipAt(std::string("/") + clip.folder + "/" + std::to_string(shot.videos.size()) + ".mov",
                       std::max(clip.timecode, 0.0), 8));
            if (clip.timecode < 0) shot.videos.back().startTimecodeString.reset();
            shot.videos.back().headerDate =
                *dateFromISO8601("2024-05-17T00:00:00Z") + std::chrono::seconds(std::llround(clip.header));
        }
        shot.date(shot.audios, "2024-05-17");
        shot.diagnose();
        EXPECT_EQ(shot.count(one.kind), one.doubted) << one.name;
        EXPECT_EQ(std::ssize(shot.doubts.byGroup), one.doubted) << one.name;
        if (one.kind == noTimecode && one.doubted > 0) {
            EXPECT_NE(shot.doubts.summary(shot.groups).front().doubt.message.find("'T.wav' was recorded"),
                      std::string::npos);
        }
    }
}

TEST(SyncDoubts, ADateThatFitsTheClipMayBeWrong) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    Shot shot; // the second day's recorder still has the first day's date, and two clips lost their sound
    for (const int day : {0, 1})
        for (int i = 0; i < 6; ++i) {
            const double at = 36000 + 300 * i + 4 * day;
            const std::string name = std::to_string(day + 1) + std::to_string(i);
            shot.videos.push_back(clipAt("/CAM/D" + std::to_string(day) + "/A" + name + ".mov", at, 8));
            shot.videos.back().headerDate = *dateFromISO8601("2024-05-17T00:00:00Z") +
                                            std::chrono::seconds(86400 * day + std::lround(at));
            if (day == 0 && i > 3) continue;
            shot.audios.push_back(
                recordingAt("/S/D" + std::to_string(day) + "/T" + name + ".wav", at - 3, 14));
        }
    shot.date(shot.audios, "2024-05-17");
    shot.diagnose();
    for (const SyncGroup& group : shot.groups) {
        const bool isRight = group.primaryAudio()->filename.substr(1, 2) == group.video.filename.substr(1, 2);
        const auto own = shot.doubts.byGroup.find(group.id);
        const bool isDoubted = own != shot.doubts.byGroup.end() &&
                               std::ranges::count(own->second, Kind::otherDay, &SyncDoubt::kind) > 0;
        EXPECT_TRUE(isRight || isDoubted) << group.video.filename << " " << group.primaryAudio()->filename;
        EXPECT_FALSE(group.video.filename[1] == '1' && isRight && isDoubted) << group.video.filename;
        if (group.video.filename != "A15.mov") continue;
        EXPECT_EQ(own->second.back().cure, "--sound-date 2024-05-18 in a scan of this day alone "
                                           "(--video '/CAM/D1' --audio '/S/D1')");
    }

    for (MediaAsset& video : shot.videos) std::swap(video.contentCreatedDate, video.headerDate);
    shot.diagnose();
    EXPECT_EQ(shot.count(Kind::otherDay), 2) << "cameras with dates: sound of the day before is left out";
    ASSERT_TRUE(shot.card(Kind::otherDateFits));
    EXPECT_EQ(shot.card(Kind::otherDateFits)->groupIDs.size(), 6U);

    Shot night; // dated by the evening before, beside the night before that
    night.videos.push_back(clipAt("/CAM/A.mov", 1803, 8));
    night.audios = {recordingAt("/S/T007.wav", 1800, 14), recordingAt("/S/T099.wav", 1801, 14)};
    for (const bool sameFolder : {true, false}) {
        night.date(night.videos, "2024-05-17");
        night.date(night.audios, "2024-05-17");
        night.diagnose();
        EXPECT_EQ(night.count(Kind::otherDay), sameFolder ? 1 : 0) << "a second recorder has its own folder";
        night.audios.back().url.path = "/R/T099.wav";
    }
}

TEST(SyncDoubts, LooksAtEachClip) {
    const auto with = [](MediaAsset asset, const auto& change) {
        change(asset);
        return asset;
    };
    const auto rate = [](TimecodeFrameRate own, const char* text = nullptr) {
        return [=](MediaAsset& asset) {
            asset.timecodeFrameRate = own;
            if (text != nullptr) asset.ixmlData.emplace().timecodeRate = text;
        };
    };
    const auto ten = clipAt("/C/A.mov", 36000, 60);
    const auto sound = [](double start, double seconds, const char* name = "/S/T.wav") {
        return recordingAt(name, start, seconds);
    };
    const auto dropped = clipAt("/C/A.mov", 36000, 60, TimecodeFrameRate::fps29_97d);
    struct Case {
        const char* name;
        MediaAsset clip;
        std::vector<MediaAsset> sounds;
        std::set<Kind> kinds;
        MatchRules rules = {};
        TrimMode trim = TrimMode::commonDuration;
    };
    using enum Kind;
    const std::vector<Case> cases{
        {"sound under all of it", ten, {sound(35990, 90)}, {}},
        {"half a second at either end", ten, {sound(36000.4, 59.6)}, {}},
        {"a card that was pulled early", ten, {sound(35990, 40)}, {shortSound, cutByTrim}},
        {"sound that begins late", ten, {sound(36004, 90)}, {shortSound}},
        {"a gap between two parts",
         ten,
         {sound(35990, 40, "/S/T_1.wav"), sound(36030.3, 40, "/S/T_2.wav")},
         {splitGap}},
        {"parts that adjoin", ten, {sound(35990, 40, "/S/T_1.wav"), sound(36030, 40, "/S/T_2.wav")}, {}},
        {"two recordings", ten, {sound(35990, 90), sound(36050, 90, "/S/U.wav")}, {ambiguous}},
        {"frame 27 of 25",
         with(ten, [](auto& a) { a.startTimecodeString = "10:00:00:27"; }),
         {sound(35990, 90)},
         {timecodeRate}},
        {"drop frame and non-drop",
         dropped,
         {with(sound(35990, 90), rate(TimecodeFrameRate::fps29_97, "29.97ND"))},
         {}},
        {"drop frame and non-drop by both files",
         dropped,
         {with(sound(35990, 90), rate(TimecodeFrameRate::fps29_97, "30000/1001 NDF"))},
         {dropMix}},
        {"drop frame and non-drop, cured",
         dropped,
         {with(sound(35990, 90), rate(TimecodeFrameRate::fps29_97, "30000/1001 NDF"))},
         {},
         {.timecodeRate = TimecodeFrameRate::fps29_97d}},
        {"non-drop that was meant to be drop frame",
         clipAt("/C/A.mov", 36036, 20, TimecodeFrameRate::fps29_97),
         {with(sound(35990, 40), rate(TimecodeFrameRate::fps29_97d))},
         {dropMix}},
        {"24 and 23.976",
         clipAt("/C/A.mov", 3600, 60, TimecodeFrameRate::fps24),
         {with(sound(3590, 90), rate(TimecodeFrameRate::fps23_976, "24000/1001"))},
         {timecodeRate}},
        {"24 and 23.976 half a minute after midnight",
         clipAt("/C/A.mov", 30, 60, TimecodeFrameRate::fps24),
         {with(sound(20, 90), rate(TimecodeFrameRate::fps23_976, "24000/1001"))},
         {}},
        {"cut to the sound", ten, {sound(35990, 40)}, {}, {}, TrimMode::overlap},
        {"a gap while a second recorder ran",
         ten,
         {sound(35990, 40, "/S/T_1.wav"), sound(36030.3, 40, "/S/T_2.wav"),
          with(sound(36000.8, 80, "/R/MIX.wav"), [](auto& a) { a.bextOriginator = "two"; })},
         {splitGap}},
        {"a gap on one of two channels",
         ten,
         {sound(35990, 40, "/S/T1-001_1.wav"), sound(35990, 40, "/S/T1-001_2.wav"),
          sound(36030, 40, "/S/T1-002_1.wav"), sound(36030.3, 40, "/S/T1-002_2.wav")},
         {splitGap}},
        {"two takes under one clip",
         ten,
         {sound(35990, 35, "/S/T05.wav"), sound(36035, 40, "/S/T06.wav")},
         {shortSound, cutByTrim}},
        {"two takes that say so",
         ten,
         {test::slated(sound(35990, 35, "/S/T_5.wav"), "1", "5"),
          test::slated(sound(36035, 40, "/S/T_6.wav"), "1", "6")},
         {shortSound, cutByTrim}},
        {"a clip by itself", ten, {}, {}},
    };
    for (const Case& one : cases) {
        Shot shot{{one.clip}, one.sounds, {}};
        shot.diagnose(one.rules, one.trim);
        std::set<Kind> kinds;
        for (const auto& [id, own] : shot.doubts.byGroup)
            for (const SyncDoubt& doubt : own) {
                kinds.insert(doubt.kind);
                EXPECT_NE(doubt.message.find('\''), std::string::npos) << "names a file: " << doubt.message;
                EXPECT_FALSE(doubt.cure.empty());
            }
        EXPECT_EQ(kinds, one.kinds) << one.name;
    }
}

TEST(SyncDoubts, HearsSpeechOnAChannelThatIsOff) {
    Shot shot{{clipAt("/C/A.mov", 36000, 60)}, {recordingAt("/S/T.wav", 35990, 90)}, {}};
    shot.diagnose();
    const auto found = [&](float offLevel, float speech, std::set<int> byHand) {
        shot.groups.update(shot.groups.front().id,
                           [&](SyncGroup& group) { group.manualActiveTracks = byHand; });
        SmartAudioResult result;
        result.bestTrackIndex = 1;
        result.tracks.resize(2);
        result.tracks[0].trackIndex = 1;
        result.tracks[0].averageLevelDB = -40;
        result.tracks[1].trackIndex = 2;
        result.tracks[1].averageLevelDB = offLevel;
        result.tracks[1].speechRatio = speech;
        const std::unordered_map<UUID, SmartAudioResult> results{{shot.groups.front().id, result}};
        return SyncDoubts::of({shot.groups, shot.audios, {}, TrimMode::noTrim, results, FileNames()})
                   .byGroup.size() == 1;
    };
    EXPECT_TRUE(found(-28, 0.3F, {}));
    EXPECT_TRUE(found(-28, 0.3F, {1}));
    EXPECT_FALSE(found(-28.5F, 0.3F, {})) << "11.5 dB";
    EXPECT_FALSE(found(-28, 0.01F, {})) << "no speech";
    EXPECT_FALSE(found(-28, 0.3F, {2})) << "it is on";
}

} // namespace
} // namespace orvane
