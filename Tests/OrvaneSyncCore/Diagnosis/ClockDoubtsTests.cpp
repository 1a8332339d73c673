#include "OrvaneSyncCore/Services/Diagnosis/LeftOver.h"
#include "Shot.h"

namespace orvane::test::doubts {
namespace {

TEST(ClockDoubts, FindsTheClockOfACard) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    for (const unsigned seed : test::seeds(30))
        for (const double offset : {-3600.0, 1800.0, -36.0, 7200.0, 4037.0}) {
            Random random(seed);
            Shot shot;
            const int takes = 5 + static_cast<int>(within(random, 0, 30));
            shootADay(shot, random, takes, "1");
            for (MediaAsset& file : shot.audios)
                *file.bextTimeReference -= samples(1) * static_cast<int>(offset);
            if (seed % 2 == 0) splitTakes(shot, random);
            shot.diagnose();
            const auto card = shot.card(Kind::constantOffset);
            ASSERT_TRUE(card) << "seed " << seed << ", " << offset;
            for (const SyncGroup& group : shot.groups)
                EXPECT_TRUE(group.isMOS() || shot.doubts.has(group.id, {Kind::constantOffset}))
                    << "silent sound by chance, seed " << seed << ", " << group.video.filename;
            const std::string option = "--sound-offset ";
            ASSERT_TRUE(card->doubt.cure.text().starts_with(option));
            const auto end = card->doubt.cure.text().find("; then check a clap");
            EXPECT_EQ(end == std::string::npos, card->doubt.message.find("is known to") == std::string::npos);
            const std::string cure = card->doubt.cure.text().substr(0, end);
            Shot cured = shot;
            cured.diagnose(MatchRules::of(MatchingDays::automatic,
                                          {.soundOffset = cure.substr(option.size())},
                                          TimecodeFrameRate::fps25));
            EXPECT_EQ(std::ranges::count_if(cured.groups, [](const auto& group) { return group.isMOS(); }), 0)
                << "seed " << seed << ": " << card->doubt.message;
            if (const auto at = card->doubt.message.find("known to "); at != std::string::npos) {
                const auto found = TimecodeUtils::tcToSeconds(cure.substr(cure.find(':') - 2), 25);
                EXPECT_LE(std::abs(found - std::abs(offset)), std::stod(card->doubt.message.substr(at + 9)))
                    << "seed " << seed << ": " << card->doubt.message << card->doubt.cure.text();
            }
            if (std::fmod(offset, 1800) == 0) {
                EXPECT_EQ(card->doubt.cure.text(), option + offsetText(offset, TimecodeFrameRate::fps25))
                    << "seed " << seed << ": whole hours are preferred";
            }
        }
}

TEST(ClockDoubts, LongRecordingsFitByTheOffsetThatStartsThemWithTheirClips) {
    for (const double offset : {-1800.0, -3600.0, -5400.0}) {
        Shot shot;
        for (int i = 0; i < 11; ++i) {
            const double at = 1200 + 7400 * i + 7 * (i % 5);
            shot.videos.push_back(clipAt("/CAM/A" + std::to_string(i) + ".mov", at, 60));
            shot.audios.push_back(recordingAt("/S/T" + std::to_string(i) + ".wav", at - 4 - offset, 1884));
        }
        shot.date(shot.videos, "2024-05-17");
        shot.date(shot.audios, "2024-05-17");
        shot.diagnose();
        const auto card = shot.card(Kind::constantOffset);
        ASSERT_TRUE(card) << offset;
        EXPECT_EQ(card->doubt.cure.text(), "--sound-offset " + offsetText(offset, TimecodeFrameRate::fps25));
    }
}

TEST(ClockDoubts, FindsTheClockOfOneCardAmongOthers) {
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
        return card ? card->doubt.cure.text() : "none";
    };
    Shot one, longer, undated, nine, dayOff, film;
    takes(one, nullptr, 9, "A", 0);
    takes(one, nullptr, 13, "B", -3);
    EXPECT_EQ(cureOf(one), "--sound-offset 03:00:00:00 in a scan of this card alone (--exclude 'A'); the "
                           "other sound then needs a document of its own");
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
    for (const double ahead : {1.0, 0.0}) { // hours by which a second camera is ahead
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
    const auto setBack = [](MediaAsset& audio, double seconds) {
        *audio.bextTimeReference -= samples(seconds);
        audio.url.path = "/S/" + audio.filename;
    };
    // A clock that restarted, one that was set right, and one beside a second recorder.
    Shot flat, half, beside;
    for (Shot* shot : {&flat, &half, &beside}) takes(*shot, "2024-05-17", 9, "A", 0);
    for (MediaAsset& audio : flat.audios) setBack(audio, 32000);
    flat.date(flat.audios, "2000-01-01");
    EXPECT_EQ(cureOf(flat).find("--sound-date 2024-05-17 --sound-offset 08:53:20:00; then"), 0U)
        << cureOf(flat);
    for (std::size_t i = 0; i < half.audios.size(); ++i) setBack(half.audios[i], i < 5 ? 7 * hour : 0);
    EXPECT_EQ(cureOf(half), "--sound-offset 07:00:00:00 in a scan of this card alone (--exclude "
                            "'S/A_[5-9].wav' --exclude 'S/A_[0-9][0-9].wav'); the other recordings then "
                            "need a document of their own");
    Shot few = half; // the recordings that are right are few enough to be named
    few.videos.assign(half.videos.begin() + 2, half.videos.begin() + 8);
    few.audios.assign(half.audios.begin() + 2, half.audios.begin() + 8);
    EXPECT_TRUE(cureOf(few).starts_with("--sound-offset 07:00:00:00 in a scan of this card alone (--exclude"))
        << cureOf(few);
    for (int i = 0; i < 12; ++i) {
        const double start =
            static_cast<double>(*beside.audios[static_cast<std::size_t>(i)].bextTimeReference) / 48000;
        beside.audios.push_back(recordingAt("/S/BAG/" + std::to_string(i) + ".wav", start - hour, 80));
    }
    beside.date(beside.audios, "2024-05-17");
    EXPECT_EQ(cureOf(beside), "--sound-offset 01:00:00:00 in a scan of this card alone (--exclude 'A'); the "
                              "other sound then needs a document of its own");
    Shot reset; // a clock that restarted in the middle of a card
    takes(reset, "2024-05-17", 9, "A", 0);
    for (std::size_t i = 0; i < reset.audios.size(); ++i) setBack(reset.audios[i], i < 8 ? 0 : 37554);
    reset.date(reset.audios, "2000-01-01", 8);
    EXPECT_EQ(cureOf(reset).find("--sound-date 2024-05-17 --sound-offset 10:25:5"), 0U) << cureOf(reset);
    Shot camera; // the camera's clock restarted in the middle of its card
    takes(camera, "2024-05-17", 9, "A", 0);
    for (std::size_t i = 5; i < camera.videos.size(); ++i) {
        auto& start = camera.videos[i].startTimecodeString;
        start = TimecodeUtils::secondsToTC(TimecodeUtils::tcToSeconds(*start, 25) - 35000, 25);
    }
    camera.date(camera.videos, "2021-01-01", 5);
    EXPECT_EQ(cureOf(camera).find("--sound-date 2021-01-01 --sound-offset -09:43:"), 0U) << cureOf(camera);
    Shot afternoon; // a second recorder, right until its clock was set
    takes(afternoon, "2024-05-17", 9, "A", 0);
    for (int i = 0; i < 12; ++i) {
        const double start = static_cast<double>(*afternoon.audios[i].bextTimeReference) / 48000;
        afternoon.audios.push_back(
            recordingAt("/S/BAG/" + std::to_string(i) + ".wav", start - (i < 6 ? 0 : hour), 80));
    }
    afternoon.date(afternoon.audios, "2024-05-17");
    EXPECT_EQ(cureOf(afternoon),
              "--sound-offset 01:00:00:00 in a scan of this card alone (--exclude 'A' --exclude "
              "'S/BAG/[0-5].wav' --exclude 'S/BAG/1[1-9].wav'); the other sound then needs a document of its "
              "own");
    takes(film, nullptr, 9, "A", 1);
    for (MediaAsset& video : film.videos) {
        const double start = TimecodeUtils::tcToSeconds(*video.startTimecodeString, 25);
        video.startTimecodeString = TimecodeUtils::secondsToTC(start, TimecodeFrameRate::fps23_976);
    }
    EXPECT_EQ(cureOf(film, {.timecodeRate = TimecodeFrameRate::fps23_976}), "--sound-offset -00:59:56:10")
        << "counted as the option is read";
    const std::string rate =
        "; the given rate, 23.976, may be the cause: by their files, most of these clips "
        "count 25";
    EXPECT_TRUE(film.card(Kind::constantOffset)->doubt.message.ends_with(rate))
        << film.card(Kind::constantOffset)->doubt.message;
}

/// A recorder that keeps the first of three dates; each day is some seconds later than the one before.
TEST(ClockDoubts, ADateThatIsWrongByDaysIsNoClockThatIsWrongByADay) {
    for (const double laterEachDay : {5, 7, 12}) {
        Shot shot;
        for (int day = 0; day < 3; ++day)
            for (int i = 0; i < 4; ++i) {
                const std::string folder = "/D" + std::to_string(day), number = std::to_string(i);
                const double at = 36000 + 400 * i + 11 * i * i + laterEachDay * day;
                shot.videos.push_back(clipAt(folder + "/CAM/A" + number + ".mov", at, 10));
                shot.date(shot.videos, std::array{"2024-05-17", "2024-05-18", "2024-05-19"}.at(day),
                          shot.videos.size() - 1);
                shot.audios.push_back(recordingAt(folder + "/SND/T" + number + ".wav", at - 3, 20));
            }
        shot.date(shot.audios, "2024-05-17");
        shot.diagnose();
        EXPECT_FALSE(shot.card(Kind::constantOffset)) << shot.card(Kind::constantOffset)->doubt.message;
        const auto date = shot.card(Kind::otherDateFits);
        ASSERT_TRUE(date) << laterEachDay;
        EXPECT_TRUE(date->doubt.cure.text().starts_with("--sound-date 2024-05-1")) << date->doubt.cure.text();
    }
}

TEST(ClockDoubts, TakesThatRepeatEachHourHideAWrongClock) {
    struct Case {
        const char* name;
        int soundFrom, soundTo; ///< hours with a recording, of 0 to 4 with a clip each
        /// Hours by which the recorder and a second camera are ahead; 0: there is none.
        double recorder, second;
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
        EXPECT_TRUE(!card || card->doubt.cure.text().starts_with(one.cure))
            << one.name << ": " << card->doubt.cure.text();
    }
}

/// A take each half hour, and a clip on each; two were shot without sound, and sound went on after the last.
TEST(ClockDoubts, TwoSilentClipsAmongManyWithSoundShowNoWrongClock) {
    constexpr int clips = 30, silent = 2;
    Shot shot;
    for (int i = 0; i < clips; ++i)
        shot.videos.push_back(clipAt("/B/B" + std::to_string(100 + i) + ".mov", 3600 + 1800 * i, 60));
    for (int i = silent; i < clips + silent; ++i)
        shot.audios.push_back(recordingAt("/S/T" + std::to_string(100 + i) + ".wav", 3590 + 1800 * i, 80));
    shot.diagnose();
    EXPECT_EQ(shot.count(Kind::constantOffset), 0);
}

TEST(ClockDoubts, OneRecordingThroughAllClipsIsToldByTheOnlyHourThatFits) {
    struct Case {
        const char* name;
        double late, before, seconds; ///< of the recording, and how long it ran before the first clip
        const char* cure;
        bool isLeftOver = false, hasOtherSound = false;
        int clips = 4;
    };
    for (const Case& one : {
             Case{"right", 0, 200, 2400, "none"},
             {"an hour late", 3600, 200, 2400, "--sound-offset -01:00:00:00 if a clap shows it"},
             {"an hour and a half late", 5400, 200, 2400, "--sound-offset -01:30:00:00 if a clap shows it"},
             {"twenty minutes late and short", 3000, 200, 2000, "none", true},
             {"long enough for several hours", 14400, 3700, 9120, "none", true},
             {"an hour late, and a clip has sound", 3600, 200, 2400, "none", true, true},
             {"an hour late, and there are two clips", 3600, 200, 2400, "none", true, false, 2},
         }) {
        Shot shot;
        for (const double at : {0, 420, 1000, 1700})
            shot.videos.push_back(
                clipAt("/CAM/A" + std::to_string(shot.videos.size()) + ".mov", 36000 + at, 20));
        shot.videos.erase(shot.videos.begin() + one.clips, shot.videos.end());
        shot.audios.push_back(recordingAt("/S/LONG.wav", 36000 + one.late - one.before, one.seconds));
        if (one.hasOtherSound) shot.audios.push_back(recordingAt("/R/T.wav", 35990, 40));
        shot.diagnose();
        const auto card = shot.card(Kind::constantOffset);
        EXPECT_EQ(card ? card->doubt.cure.text() : "none", one.cure) << one.name;
        const auto left = LeftOver::of(shot.groups, {&shot.audios.front()}, {}, shot.doubts);
        EXPECT_EQ(!left.isEmpty(), one.isLeftOver) << one.name;
        if (!one.isLeftOver || one.clips < 4) continue;
        const std::string count = one.hasOtherSound ? "3 clips" : "4 clips", text = left.text();
        EXPECT_EQ(text.find(count + " have no sound, and 1 recording has no picture:\n  " + count +
                            " in '/CAM' without a date, from 10:0"),
                  0U)
            << text;
        EXPECT_NE(text.find(" to 10:28:40\n  1 recording in '/S' without a date, from 1"), std::string::npos)
            << text;
    }
}

TEST(ClockDoubts, DamagedFilesExplainWhatIsLeftOver) {
    for (const bool isDamaged : {false, true}) {
        Shot shot;
        shot.videos = {clipAt("/CAM/A1.mov", 36000, 20), clipAt("/CAM/A2.mov", 36300, 20)};
        shot.audios = {recordingAt("/S/T2.wav", 36295, 30), recordingAt("/S/T3.wav", 36595, 30),
                       recordingAt("/S/T4.wav", 50000, 1)};
        if (isDamaged) shot.audios.back().heldShare = 0.02;
        shot.diagnose();
        const auto left = LeftOver::of(shot.groups, {&shot.audios[1], &shot.audios[2]}, {}, shot.doubts);
        EXPECT_EQ(left.isEmpty(), isDamaged) << left.text();
    }
}

TEST(ClockDoubts, TellsOfADayWithoutAnyRecording) {
    for (const char* recorded : {"2024-05-17", "2024-05-18", ""}) {
        Shot shot;
        for (int i = 0; i < 4; ++i)
            shot.videos.push_back(clipAt("/CAM/A" + std::to_string(i) + ".mov", 36000 + 300 * i, 20));
        shot.date(shot.videos, "2024-05-17");
        shot.date(shot.videos, "2024-05-18", 2);
        shot.audios = {recordingAt("/S/T1.wav", 35995, 330), recordingAt("/S/WT.wav", 39000, 20)};
        shot.date(shot.audios, "2024-05-17");
        shot.audios.back().contentCreatedDate = dateFromISO8601(std::string(recorded) + "T00:00:00Z");
        shot.diagnose();
        const std::string text = LeftOver::of(shot.groups, {&shot.audios.back()}, {}, shot.doubts).text();
        EXPECT_EQ(text.starts_with(
                      "No recording of 2024-05-18 is on these cards, and 2 clips of that day have "
                      "no sound: unless a date is wrong and the recordings below belong to them, look"),
                  recorded == std::string("2024-05-17"))
            << text;
    }
}

TEST(ClockDoubts, OffsetsByHandTellOfTheOtherClips) {
    struct Case {
        const char* name;
        std::vector<double> byHand;     ///< manual offsets of the first clips, seconds
        int locked, doubted;            ///< -1: none
        std::vector<double> heard = {}; ///< of the first clips, seconds
    };
    const std::vector<Case> cases{
        {"a clock that is 2.4 s late", {-2.4, -2.38, -2.42}, -1, 3},
        {"two are no sign", {-2.5, -2.5}, -1, 0},
        {"each by another offset", {-2.5, 1, -0.8, 0.4}, -1, 0},
        {"part of a card that was an hour off", {-3600, -3600, -3600}, -1, 0},
        {"nudges to the frame", {-0.04, -0.04, -0.04}, -1, 0},
        {"one is right where it is", {-2.5, -2.5, -2.5}, 5, 0},
        {"the others would have no sound an hour later", {3600, 3600, 3600}, -1, 0},
        {"the others were heard where they are", {-2.4, -2.4, -2.4}, -1, 0, {0, 0, 0, 0.02, 0, 0.01}},
        {"heard by the cameras, 2.4 s late", {}, -1, 6, {-2.4, -2.41, -2.4, -2.38, 1}},
        {"heard, and one is right where it is", {}, 5, 0, {-2.4, -2.41, -2.4}},
        {"two that were heard", {}, -1, 0, {-2.4, -2.4}},
        {"heard where they are", {}, -1, 0, {0, 0.04, -0.04, 0}},
        {"heard here and there", {}, -1, 0, {-2.4, 1, 3, -2.4, -2.41}},
    };
    for (const Case& one : cases) {
        Shot shot;
        for (int i = 0; i < 6; ++i) {
            shot.videos.push_back(clipAt("/CAM/A" + std::to_string(i) + ".mov", 36000 + 300 * i, 8));
            shot.videos.back().frameRate = 25;
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
        std::unordered_map<UUID, HeardLag> heard;
        for (std::size_t i = 0; i < one.heard.size(); ++i)
            heard[shot.groups[i].audioMatches.front().id] = {one.heard[i]};
        shot.doubts =
            SyncDoubts::of({shot.groups, shot.audios, {}, TrimMode::noTrim, {}, FileNames(), &heard});
        EXPECT_EQ(shot.count(Kind::constantOffset), one.doubted) << one.name;
        const auto card = shot.card(Kind::constantOffset);
        // An option for all recordings would move again what was moved by hand.
        const std::string cure = card ? card->doubt.cure.text() : "";
        EXPECT_TRUE(!card || cure.find(one.byHand.empty() ? "--sound-offset -00:00:02:10"
                                                          : "-60 under 'offset_frames'") != std::string::npos)
            << cure;
        EXPECT_TRUE(one.byHand.empty() || !card || card->doubt.cure.firstWay() == nullptr) << one.name;
    }
}

/// A recorder that was set back at the end of summer time: its later takes are at the same times as earlier
/// ones.
TEST(ClockDoubts, ARecorderWhoseClipsWereMovedOneByOneLeavesTheOthersTheirSound) {
    Shot shot; // a cart that stopped after the ninth take, and a bag recorder that is an hour late
    for (int i = 0; i < 13; ++i) {
        const double at = 36000 + 410 * i + 17 * i * i;
        const std::string number = std::to_string(i);
        shot.videos.push_back(clipAt("/CAM/A" + number + ".mov", at, 20));
        if (i < 9) shot.audios.push_back(recordingAt("/CART/T" + number + ".wav", at - 4, 30));
        shot.audios.push_back(recordingAt("/BAG/B" + number + ".wav", at + 3600 - 5, 32));
    }
    shot.diagnose();
    EXPECT_EQ(shot.count(Kind::constantOffset), 4);
    for (SyncGroup group : shot.groups) {
        const std::string number = group.video.filename.substr(1, group.video.filename.find('.') - 1);
        if (std::stoi(number) < 9) continue;
        const auto sound = std::ranges::find(shot.audios, "B" + number + ".wav", &MediaAsset::filename);
        group.audioMatches = {SyncEngine::matchByTimecode(group.video, *sound, {})};
        group.manualAudioOffsetSeconds = -3600;
        group.matchStatus = MatchStatus::manual();
        shot.groups.update(group.id, [&](SyncGroup& own) { own = group; });
    }
    shot.derive();
    EXPECT_EQ(shot.count(Kind::constantOffset), 0);
}

/// A recorder a day ahead and 50 minutes late, one of whose takes lies under another clip by the time of day.
TEST(ClockDoubts, TheDateOfATakeThatLiesThereByChanceGivesNoCallOfItsOwn) {
    Shot shot;
    for (const double at : {0, 431, 897, 1290, 1811, 2203, 2690, 3003, 3555, 4040}) {
        const std::string number = std::to_string(shot.videos.size());
        shot.videos.push_back(clipAt("/CAM/A" + number + ".mov", 36000 + at, 10));
        shot.audios.push_back(recordingAt("/S/T" + number + ".wav", 36000 + at - 3000 - 5, 20));
    }
    shot.date(shot.videos, "2024-05-17");
    shot.date(shot.audios, "2024-05-18");
    shot.diagnose();
    const auto& own = shot.doubts.byGroup.at(shot.groups.front().id);
    const auto date = std::ranges::find(own, Kind::otherDay, &SyncDoubt::kind);
    ASSERT_NE(date, own.end());
    EXPECT_EQ(date->cure.text(), "settle the doubt about its clock first");
    ASSERT_TRUE(shot.card(Kind::constantOffset));
    EXPECT_NE(shot.card(Kind::constantOffset)->doubt.cure.firstWay(), nullptr);
}

TEST(ClockDoubts, TakesOfTheHourThatComesTwiceAreFoundBesideOthers) {
    // Seconds by which the takes after the change are later in the hour than those before it.
    for (const int later : {0, 3}) {
        Shot shot;
        for (int i = 0; i < 6; ++i) {
            const double at = 7400 + 1200 * i + (i < 3 ? 0 : later);
            shot.videos.push_back(clipAt("/CAM/A" + std::to_string(i) + ".mov", at, 10));
            shot.audios.push_back(
                recordingAt("/S/T" + std::to_string(i) + ".wav", at - 3 - (i < 3 ? 0 : 3600), 20));
        }
        shot.diagnose();
        EXPECT_EQ(shot.count(later == 0 ? Kind::ambiguous : Kind::otherDay), 3);
        EXPECT_EQ(shot.count(Kind::constantOffset), 3);
        ASSERT_TRUE(shot.card(Kind::constantOffset));
        EXPECT_TRUE(shot.card(Kind::constantOffset)
                        ->doubt.message.starts_with("3 of 6 recordings in '/S' ('T3.wav' to 'T5.wav')"));
        const std::string other = shot.doubts.summary(shot.groups).back().doubt.message;
        EXPECT_EQ(later == 0,
                  other.find("of more than one day, or of an hour that came twice") == std::string::npos)
            << other;
    }
}

TEST(ClockDoubts, ClaimsNoClockByChance) {
    int claimed = 0;
    // Three of five recordings overlap clips at one wrong date and hour.
    std::vector<unsigned> seeds(1, 47543);
    std::ranges::copy(test::seeds(200), std::back_inserter(seeds));
    for (const unsigned seed : seeds) {
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
        if (seed % 2 == 1) {
            shot.date(shot.videos, "2024-05-17");
            shot.date(shot.audios, "2024-05-20");
        }
        shot.diagnose();
        claimed += static_cast<int>(shot.doubts.cards.size());
    }
    EXPECT_EQ(claimed, 0);
}

/// Recorders that start late or stop early, by a similar time at each take or not, and cameras that roll on.
TEST(ClockDoubts, TakesLateStartsAndEarlyStopsForNoClock) {
    // Delays by hand that one offset explains to the frame: of the recorder, of all takes, of the camera.
    std::vector<unsigned> seeds{1039, 1143, 1175};
    std::ranges::copy(test::seeds(200), std::back_inserter(seeds));
    for (const unsigned seed : seeds) {
        Random random(seed);
        Shot shot;
        const double late = within(random, -4, 6), rest = within(random, -6, 12);
        const double varied = seed % 2 == 0 ? 0.2 : 3, clipSeconds = within(random, 12, 60);
        double at = 36000;
        for (int i = 0; i < 4 + static_cast<int>(within(random, 0, 20)); ++i) {
            const std::string number = std::to_string(i);
            const double length = seed % 3 == 0 ? clipSeconds : within(random, 12, 60);
            const double start = at + late + within(random, -varied, varied);
            const double end = at + length + rest + within(random, -varied, varied);
            shot.videos.push_back(clipAt("/CAM/A" + number + ".mov", at, length));
            if (seed % 5 == 0) shot.videos.push_back(clipAt("/B/B" + number + ".mov", at + 2, length - 1));
            shot.audios.push_back(recordingAt("/S/T" + number + ".wav", start, std::max(end - start, 2.0)));
            at += within(random, 120, 900);
        }
        shot.diagnose();
        const auto card = shot.card(Kind::constantOffset);
        EXPECT_FALSE(card) << "seed " << seed << ": " << card->doubt.message;
    }
}

TEST(ClockDoubts, AnOffsetThatTimecodeTellsRoughlyStaysInDoubtUntilItIsChecked) {
    const auto late = [](double seconds) {
        Shot shot;
        for (int i = 0; i < 5; ++i) {
            const double at = 36000 + 400 * i + 11 * i * i;
            shot.videos.push_back(clipAt("/CAM/A" + std::to_string(i) + ".mov", at, 10));
            shot.audios.push_back(recordingAt("/S/T" + std::to_string(i) + ".wav", at - 5 + seconds, 20));
        }
        return shot;
    };
    for (const auto& [seconds, given, doubted] :
         {std::tuple{40.0, -38.0, 5}, {3600.0, -3600.0, 0}, {1800.0, -1800.0, 0}}) {
        Shot shot = late(seconds);
        shot.diagnose({.soundOffsetSeconds = given});
        EXPECT_EQ(shot.count(Kind::constantOffset), doubted) << given;
        shot.locksWhatIsHeard = true;
        shot.diagnose({.soundOffsetSeconds = given});
        EXPECT_EQ(shot.count(Kind::constantOffset), 0) << given;
    }
}

/// Cameras whose headers are a day ahead, beside a recorder that is an hour late.
TEST(ClockDoubts, AreToldOnceForClipsWithOtherSoundAndForClipsWithAWrongDate) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    constexpr int takes = 14;
    const auto place = [](const char* day, MediaAsset& video, double at) {
        video.headerDate = *dateFromISO8601(std::string(day) + "T00:00:00Z") +
                           std::chrono::seconds(std::lround(at + *video.durationSeconds));
    };
    Shot units, cameras;
    for (int i = 0; i < takes; ++i) {
        const std::string number = std::to_string(i);
        const double at = 36000 + 300 * i + 7 * i * i, other = at + (i % 2 == 0 ? 2 : 110);
        units.videos.push_back(clipAt("/U1/CAM/A" + number + ".mov", at, 20));
        place("2024-05-17", units.videos.back(), at);
        units.audios.push_back(recordingAt("/U1/SND/T" + number + ".wav", at - 4, 32));
        units.videos.push_back(clipAt("/U2/CAM/C" + number + ".mov", other, i % 4 == 0 ? 29 : 20));
        place("2024-05-18", units.videos.back(), other);
        units.audios.push_back(recordingAt("/U2/SND/W" + number + ".wav", other - 4 - 3600, 37));

        for (const char* name : {"/A/A", "/B/B"}) {
            cameras.videos.push_back(clipAt(name + number + ".mov", at + (name[1] == 'B' ? 1 : 0), 20));
            place(name[1] == 'B' ? "2024-05-18" : "2024-05-17", cameras.videos.back(), at);
        }
        cameras.audios.push_back(recordingAt((i < takes / 2 ? "/SND1/T" : "/SND2/T") + number + ".wav",
                                             at - 4 + (i < takes / 2 ? 0 : 3600), 32));
    }
    for (Shot* shot : {&units, &cameras}) {
        shot->date(shot->audios, "2024-05-17");
        shot->diagnose();
        const auto card = shot->card(Kind::constantOffset);
        ASSERT_TRUE(card);
        EXPECT_EQ(std::ssize(card->groupIDs), takes) << card->doubt.message;
        for (const UUID& id : card->groupIDs) {
            const auto& own = shot->doubts.byGroup.at(id);
            EXPECT_EQ(own.size(), 1U) << shot->groups.find(id)->video.filename << ": " << own.back().message;
        }
    }
}

TEST(ClockDoubts, AGivenHourThatTimecodeDoesNotShowIsDoubtedUntilItIsChecked) {
    constexpr double hour = 3600;
    struct Case {
        const char* name;
        double first, seconds; ///< of the recording that runs all day, from 10:00 on
        double given;
        int doubted;
    };
    for (const Case& one : {Case{"it lies under all clips in any case", -2 * hour, 5 * hour, hour, 5},
                            {"the same, half an hour", -2 * hour, 5 * hour, -hour / 2, 5},
                            {"only the offset puts it under them", -hour - 10, hour / 2, hour, 0}}) {
        Shot shot;
        for (int i = 0; i < 5; ++i)
            shot.videos.push_back(clipAt("/CAM/A" + std::to_string(i) + ".mov", 10 * hour + 300 * i, 20));
        shot.audios.push_back(recordingAt("/S/LAV.wav", 10 * hour + one.first, one.seconds));
        const MatchRules rules{.soundOffsetSeconds = one.given};
        shot.diagnose(rules);
        EXPECT_EQ(shot.count(Kind::constantOffset), one.doubted) << one.name;
        if (const auto card = shot.card(Kind::constantOffset)) {
            EXPECT_NE(card->doubt.message.find("without it under 5"), std::string::npos)
                << card->doubt.message;
            EXPECT_TRUE(card->doubt.cure.text().starts_with("check a clap")) << card->doubt.cure.text();
        }
        shot.locksWhatIsHeard = true;
        shot.diagnose(rules);
        EXPECT_EQ(shot.count(Kind::constantOffset), 0) << one.name;
    }
}

/// A camera whose clock was set in the middle of its card, beside a camera that is right.
TEST(ClockDoubts, TellsOfTheClipsFromWhichOnACamerasClockIsWrong) {
    for (const double ahead : {3600.0, -50.0, 0.0}) {
        Shot shot;
        for (int i = 0; i < 8; ++i) {
            const double at = 36000 + 400 * i + 13 * i * i;
            const std::string number = std::to_string(i);
            shot.videos.push_back(clipAt("/CAM_A/A" + number + ".mov", at, 15));
            shot.videos.push_back(clipAt("/CAM_B/B" + number + ".mov", at + 1 + (i < 4 ? 0 : ahead), 15));
            shot.audios.push_back(recordingAt("/S/T" + number + ".wav", at - 5, 35));
        }
        shot.diagnose();
        const auto card = shot.card(Kind::constantOffset);
        ASSERT_EQ(card.has_value(), ahead != 0) << ahead;
        if (!card) continue;
        EXPECT_EQ(card->groupIDs.size(), 4U) << card->doubt.message;
        const std::string cure = card->doubt.cure.text();
        EXPECT_NE(cure.find("--exclude 'CAM_A' --exclude 'CAM_B/B0.mov'"), std::string::npos) << cure;
        EXPECT_EQ(cure.starts_with("--sound-offset 01:00:00:00"), ahead == 3600) << cure;
        // Locks on the clips that are right change nothing about the others.
        shot.locksWhatIsHeard = true;
        shot.diagnose();
        const auto locked = shot.card(Kind::constantOffset);
        ASSERT_TRUE(locked) << ahead;
        EXPECT_EQ(locked->doubt.message, card->doubt.message);
        EXPECT_EQ(locked->doubt.cure.text(), cure);
        EXPECT_EQ(locked->groupIDs.size(), 4U);
    }
}

/// Two units; the scan leaves the sound of one out.
TEST(ClockDoubts, LaysNoSoundOfAnotherUnitByAnOddOffset) {
    for (const bool areUnits : {true, false}) {
        Shot shot;
        for (int i = 0; i < 5; ++i) {
            const double at = 36000 + 400 * i + 13 * i * i;
            const std::string number = std::to_string(i);
            shot.videos.push_back(clipAt("/CAM/U1/A" + number + ".mov", at - 65, 15));
            shot.videos.push_back(clipAt("/CAM/U2/B" + number + ".mov", at, 15));
            shot.audios.push_back(
                recordingAt((areUnits ? "/SND/U2/T" : "/SND/T") + number + ".wav", at - 5, 35));
        }
        shot.diagnose();
        EXPECT_EQ(shot.count(Kind::constantOffset), areUnits ? 0 : 5);
    }
}

TEST(ClockDoubts, LockedClipsSpeakForTheirClock) {
    Shot shot;
    for (int take = 0; take < 60; ++take) {
        const std::string number = std::to_string(take);
        const double at = 9 * 3600 + 40.0 * take;
        shot.videos.push_back(clipAt("/CAM/A" + number + ".mov", at, 6));
        if (take % 10 != 7) shot.audios.push_back(recordingAt("/SOUND/T" + number + ".wav", at - 2, 10));
    }
    for (const bool areLocked : {false, true}) {
        shot.locksWhatIsHeard = areLocked;
        shot.diagnose();
        EXPECT_EQ(shot.count(Kind::constantOffset), 0) << "locked: " << areLocked;
    }
}

} // namespace
} // namespace orvane::test::doubts
