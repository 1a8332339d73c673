#include "Shot.h"

namespace orvane::test::doubts {
namespace {

/// Read as drop frame, the clips would lie up to three frames off.
TEST(RateDoubts, OfTwoRatesThatKeepToOneClockTheStatedOneIsNamed) {
    Shot shot;
    for (int i = 0; i < 7; ++i) {
        const double at = 46800 + 613 * i;
        shot.videos.push_back(clipAt("/C/A" + std::to_string(i) + ".mov", at, 12, TimecodeFrameRate::fps30));
        shot.videos.back().timecodeFrameRate = TimecodeFrameRate::fps29_97;
        shot.audios.push_back(recordingAt("/S/T" + std::to_string(i) + ".wav", at - 4, 20));
        shot.audios.back().timecodeFrameRate = TimecodeFrameRate::fps30;
    }
    shot.diagnose();
    ASSERT_TRUE(shot.card(Kind::timecodeRate));
    EXPECT_TRUE(shot.card(Kind::timecodeRate)->doubt.cure.text().starts_with("--tc-rate 30"))
        << shot.card(Kind::timecodeRate)->doubt.cure.text();
}

TEST(RateDoubts, FindsARateAndADate) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    Random random(7);
    Shot film, dated;
    shootADay(film, random, 30, "1");
    for (MediaAsset& video : film.videos) {
        // The labels count 23.976, and the file states 24.
        const double start = TimecodeUtils::tcToSeconds(*video.startTimecodeString, 25);
        video.startTimecodeString = TimecodeUtils::secondsToTC(start, TimecodeFrameRate::fps23_976);
        video.timecodeFrameRate = TimecodeFrameRate::fps24;
    }
    // A camera that counts at its stated rate keeps its sound at the other rate, too.
    for (int i = 0; i < 4; ++i) {
        const double start = static_cast<double>(*film.audios[static_cast<std::size_t>(i)].bextTimeReference);
        film.videos.push_back(clipAt("/CAMB/B" + std::to_string(i) + ".mov", start / 48000 + 3, 10,
                                     TimecodeFrameRate::fps23_976));
    }
    film.diagnose();
    ASSERT_TRUE(film.card(Kind::timecodeRate));
    EXPECT_EQ(film.card(Kind::timecodeRate)->groupIDs.size(), 30U);
    EXPECT_TRUE(
        film.card(Kind::timecodeRate)->doubt.cure.text().starts_with("--tc-rate 23.976, then check a clap"));
    EXPECT_FALSE(film.card(Kind::constantOffset));
    // Some clips have sound at the current rates, and the camera heard it at one distance all day.
    for (std::size_t i = 0; i < 20; i += 5) {
        const auto start = static_cast<double>(*film.audios[i].bextTimeReference) / 48000;
        film.videos.push_back(
            clipAt("/CAM/Z" + std::to_string(i) + ".mov", start + 3, 10, TimecodeFrameRate::fps24));
    }
    film.diagnose();
    ASSERT_TRUE(film.card(Kind::timecodeRate));
    std::unordered_map<UUID, HeardLag> heard;
    for (const SyncGroup& group : film.groups)
        if (group.video.filename.starts_with("Z")) heard[group.audioMatches.front().id] = {2};
    film.doubts = SyncDoubts::of({film.groups, film.audios, {}, TrimMode::noTrim, {}, FileNames(), &heard});
    EXPECT_FALSE(film.card(Kind::timecodeRate)) << "which is no drift";

    shootADay(dated, random, 8, "1");
    for (MediaAsset& video : dated.videos) video.contentCreatedDate = dateFromISO8601("2024-05-17T12:00:00Z");
    for (MediaAsset& audio : dated.audios) audio.contentCreatedDate = dateFromISO8601("2000-01-01T12:00:00Z");
    dated.diagnose();
    ASSERT_TRUE(dated.card(Kind::otherDateFits));
    EXPECT_TRUE(dated.card(Kind::otherDateFits)
                    ->doubt.cure.text()
                    .starts_with("--sound-date 2024-05-17; one of the two dates is wrong"));
    EXPECT_EQ(dated.card(Kind::otherDateFits)->groupIDs.size(), 8U);
    // A header in UTC changes its day within the clips.
    for (std::size_t i = 0; i < dated.videos.size(); ++i) {
        dated.videos[i].contentCreatedDate.reset();
        dated.videos[i].headerDate = dateFromISO8601(i < 4 ? "2024-05-17T23:00:00Z" : "2024-05-18T01:00:00Z");
    }
    for (const char* given : {"2024-05-17T00:00:00Z", "2024-05-18T00:00:00Z"}) {
        dated.diagnose({.soundDay = dayNumber(*dateFromISO8601(given))});
        EXPECT_FALSE(dated.card(Kind::otherDateFits)) << given << " serves all clips";
    }

    Shot ahead; // a second camera has a wrong date, beside one with the right date
    shootADay(ahead, random, 8, "1");
    for (std::size_t i = 0; i < 8; ++i) {
        const double start = TimecodeUtils::tcToSeconds(*ahead.videos[i].startTimecodeString, 25);
        ahead.videos.push_back(clipAt("/B/B" + std::to_string(i) + ".mov", start + 1, 10));
    }
    ahead.date(ahead.audios, "2024-05-17");
    ahead.date(ahead.videos, "2024-05-17");
    ahead.date(ahead.videos, "2024-05-18", 8);
    ahead.diagnose({.days = MatchingDays::same});
    EXPECT_EQ(ahead.count(Kind::otherDateFits), 8);
    const auto cure = [&] {
        const auto card = ahead.card(Kind::otherDateFits);
        return card ? card->doubt.cure.text() : "no doubt";
    };
    EXPECT_TRUE(cure().starts_with("look for the sound of 2024-05-18")) << cure();
    for (MediaAsset& video : ahead.videos)
        video.headerDate =
            *std::exchange(video.contentCreatedDate, std::nullopt) +
            std::chrono::seconds(std::lround(TimecodeUtils::tcToSeconds(*video.startTimecodeString, 25)));
    ahead.diagnose();
    EXPECT_TRUE(cure().starts_with("look for the sound of 2024-05-18")) << cure();
    FileNames names;
    for (const double seconds : {0.0, 1.0}) {
        std::unordered_map<UUID, HeardLag> heardByB; // by the microphones of the second camera
        for (const SyncGroup& group : ahead.groups)
            if (group.video.filename.starts_with("B")) heardByB[group.audioMatches.front().id] = {seconds};
        ahead.doubts =
            SyncDoubts::of({ahead.groups, ahead.audios, {}, TrimMode::commonDuration, {}, names, &heardByB});
        EXPECT_TRUE(cure().starts_with(seconds == 0 ? "no doubt"
                                                    : "--sound-date 2024-05-18 in a scan of this day alone "
                                                      "(--video '/B'"))
            << cure();
    }

    Shot two; // days in one folder, with one date for their cards, distinguished by the hours
    for (int i = 0; i < 8; ++i) {
        const std::string number = std::to_string(i), day = i < 4 ? "1" : "2";
        const double at = 36000 + 400 * (i % 4) + (i < 4 ? 0 : 60);
        two.videos.push_back(clipAt("/R/C/A00" + day + "C" + number + ".mov", at, 10));
        two.audios.push_back(recordingAt("/R/S" + day + "/T" + number + ".wav", at - 3, 20));
    }
    two.date(two.videos, "2024-05-17");
    two.date(two.videos, "2024-05-18", 4);
    two.date(two.audios, "2000-01-01");
    two.diagnose();
    ASSERT_EQ(two.doubts.cards.size(), 2U);
    for (const std::size_t day : {0U, 1U})
        EXPECT_NE(
            two.doubts.cards[day].doubt.cure.text().find(day == 0 ? "--exclude 'S2'" : "--exclude 'S1'"),
            std::string::npos)
            << two.doubts.cards[day].doubt.cure.text();

    Shot nights; // each night began before midnight, and the cure concerns its day only
    for (int night = 0; night < 3; ++night) {
        const Date first = *dateFromISO8601("2024-05-17T00:00:00Z") + std::chrono::hours(24 * night);
        const std::string name = std::to_string(night);
        nights.videos.push_back(clipAt("/CAM/A" + name + ".mov", 5, 8, TimecodeFrameRate::fps24));
        nights.videos.back().contentCreatedDate = first + std::chrono::hours(24);
        nights.audios.push_back(recordingAt("/S/T" + name + ".wav", 86390, 60));
        nights.audios.back().contentCreatedDate = first;
    }
    nights.diagnose({.days = MatchingDays::same});
    EXPECT_EQ(nights.count(Kind::timecodeRate), 0) << "no rate moves them into one day";

    Shot clean; // pictures without sound of the first day, at hours of the second day's sound
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

/// A camera that counts 24, jammed together with a recorder and another camera of 23.976: read as 23.976, its
/// clips find their sound as well.
TEST(RateDoubts, WhatARateAndAnOffsetExplainIsDecidedByEar) {
    enum class Heard { nobodyListened, atOneOffset, driftingApart, noMicrophones };
    struct Case {
        Heard heard;
        const char *rate, *offset; ///< beginnings of the cures; null: no such doubt
    };
    for (const Case& one : {Case{Heard::noMicrophones, "--tc-rate 23.976, then check a clap", nullptr},
                            {Heard::nobodyListened, "run 'diagnose'", nullptr},
                            {Heard::atOneOffset, nullptr, "attach their recordings and move them"},
                            {Heard::driftingApart, "--tc-rate 23.976", nullptr}}) {
        Shot shot;
        for (int i = 0; i < 14; ++i) {
            const double at = 32600 + 380 * i + 3 * i * i;
            const std::string number = std::to_string(i);
            shot.videos.push_back(clipAt("/A/A" + number + ".mov", at, 12, TimecodeFrameRate::fps23_976));
            shot.videos.push_back(clipAt("/B/B" + number + ".mov", at - 32.4, 12, TimecodeFrameRate::fps24));
            for (auto camera = shot.videos.end() - 2; camera != shot.videos.end(); ++camera)
                if (one.heard != Heard::noMicrophones) camera->channelCount = 2;
            shot.audios.push_back(recordingAt("/S/T" + number + ".wav", at - 6, 26));
        }
        shot.diagnose();
        FileNames names;
        HeardClaims heard;
        DoubtInput input{shot.groups, shot.audios, {}, TrimMode::noTrim, {}, names};
        if (one.heard == Heard::atOneOffset || one.heard == Heard::driftingApart) {
            input.heardClaims = &heard;
            for (int round = 0; round < 2; ++round)
                for (const SoundClaim& claim : SyncDoubts::claims(input)) {
                    const auto number = std::stoi(shot.groups.find(claim.clipID)->video.filename.substr(1));
                    heard[claim.key()] = {-6 + (one.heard == Heard::driftingApart ? number * 0.38 : 0.0),
                                          true};
                }
            EXPECT_FALSE(heard.empty());
        }
        shot.doubts = SyncDoubts::of(input);
        const auto check = [&](Kind kind, const char* cure) {
            const auto card = shot.card(kind);
            EXPECT_EQ(card.has_value(), cure != nullptr) << static_cast<int>(one.heard);
            if (!card || cure == nullptr) return;
            EXPECT_TRUE(card->doubt.cure.text().starts_with(cure)) << card->doubt.cure.text();
            EXPECT_EQ(card->groupIDs.size(), 14U);
        };
        check(Kind::timecodeRate, one.rate);
        check(Kind::constantOffset, one.offset);
        if (one.offset == nullptr) continue;
        const auto card = shot.card(Kind::constantOffset);
        ASSERT_TRUE(card);
        for (const UUID& id : card->groupIDs) {
            const auto& suggestion = shot.doubts.byGroup[id].back().suggestion;
            ASSERT_TRUE(suggestion);
            EXPECT_NEAR(suggestion->offsetSeconds, -32.4, 0.05);
        }
    }
}

} // namespace
} // namespace orvane::test::doubts
