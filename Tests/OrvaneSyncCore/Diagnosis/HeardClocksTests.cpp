#include "OrvaneSyncCore/Services/Waveform/SoundLag.h"
#include "Shot.h"

namespace orvane::test::doubts {
namespace {

TEST(HeardClocks, ARecorderThatWasStartedLateIsNoWrongClockOnceTheCamerasWereHeard) {
    for (const bool isSecondUnitRight : {false, true}) {
        Shot shot;
        for (int i = 0; i < 6; ++i) {
            const std::string number = std::to_string(i) + ".wav";
            shot.videos.push_back(clipAt("/CAM/A" + std::to_string(i) + ".mov", 36000 + 300 * i, 10));
            shot.videos.back().channelCount = 2;
            shot.audios.push_back(recordingAt("/S/T" + number, 36003 + 300 * i, 12));
            if (isSecondUnitRight) shot.audios.push_back(recordingAt("/S2/U" + number, 35997 + 300 * i, 20));
        }
        shot.diagnose();
        EXPECT_EQ(shot.count(Kind::constantOffset), 0) << "timecode tells no clock from a slow hand";
        std::unordered_map<UUID, HeardLag> heard;
        for (const SoundLag::Pair& pair : SoundLag::pairsToHear(shot.groups))
            if (pair.recording.files.front().url.path.starts_with("/S/")) heard[pair.matchID] = {0.04};
        const auto doubtsOf = [&] {
            shot.doubts =
                SyncDoubts::of({shot.groups, shot.audios, {}, TrimMode::noTrim, {}, FileNames(), &heard});
            return shot.count(Kind::constantOffset);
        };
        EXPECT_EQ(doubtsOf(), 0);
        EXPECT_EQ(shot.count(Kind::shortSound), isSecondUnitRight ? 0 : 6);
        for (auto& [match, lag] : heard) lag.seconds = -3;
        EXPECT_EQ(doubtsOf(), 6) << "heard at another place";
    }
}

TEST(HeardClocks, WhatWasHeardIsCuredInAScanOfItsRecorderAlone) {
    struct Case {
        const char *bag, *cart; ///< beginnings of the paths; the first recorder is heard and 2 s late
        std::optional<HeardLag> otherCamera; ///< absent: there is none, or it has no microphone
        const char* scan;
        bool isOtherDeaf = false, hasOtherUnit = false;
    };
    for (const Case& one :
         {Case{"/S/BAG/B", "/S/CART/T", {}, "in a scan of this card alone (--exclude 'CART');"},
          {"/S/B", "/S/T", {}, "in a scan of this card alone (--exclude 'S/T*.wav');"},
          {"/S/T1", "/S/T2", {}, "in a scan of these recordings alone (put links"},
          {"/S/BAG/B", "/S/CART/T", HeardLag{0},
           "in a scan of this card alone (--exclude 'CAM2' --exclude 'CART');"},
          {"/S/BAG/B", "/S/CART/T", HeardLag{-2.04}, "in a scan of this card alone (--exclude 'CART');"},
          {"/S/BAG/B", "/S/CART/T", {}, "in a scan of this card alone (--exclude 'CART');", true},
          {"/S/BAG/B",
           "/S/CART/T",
           {},
           "in a scan of this card alone (--exclude 'CART' --exclude 'U2');",
           false,
           true}}) {
        Shot shot;
        for (int i = 0; i < 4; ++i) {
            const std::string number = std::to_string(i);
            const double at = 36000 + 300 * i;
            shot.videos.push_back(clipAt("/CAM/A" + number + ".mov", at, 10));
            if (one.otherCamera || one.isOtherDeaf)
                shot.videos.push_back(clipAt("/CAM2/B" + number + ".mov", at, 10));
            if (one.hasOtherUnit) {
                shot.videos.push_back(clipAt("/U2/CAM/C" + number + ".mov", at + 100, 10));
                shot.audios.push_back(recordingAt("/U2/SND/C" + number + ".wav", at + 97, 20));
            }
            shot.audios.push_back(recordingAt(one.bag + number + ".wav", at - 3, 20));
            shot.audios.push_back(recordingAt(one.cart + number + ".wav", at - 4, 20));
        }
        shot.diagnose();
        std::unordered_map<UUID, HeardLag> heard;
        for (const SyncGroup& group : shot.groups)
            if (group.video.url.path.starts_with("/CAM/"))
                heard[group.audioMatches.front().id] = {-2};
            else if (one.otherCamera)
                heard[group.audioMatches.front().id] = *one.otherCamera;
        shot.doubts =
            SyncDoubts::of({shot.groups, shot.audios, {}, TrimMode::noTrim, {}, FileNames(), &heard});
        ASSERT_TRUE(shot.card(Kind::constantOffset)) << one.bag;
        EXPECT_NE(shot.card(Kind::constantOffset)->doubt.cure.text().find(one.scan), std::string::npos)
            << shot.card(Kind::constantOffset)->doubt.cure.text();
        EXPECT_EQ(shot.count(Kind::ambiguous) + shot.count(Kind::otherDay),
                  one.hasOtherUnit ? 4 : std::ssize(shot.groups))
            << "which of the two is right";
    }
}

TEST(HeardClocks, ACameraThatIsOffByAFewFramesIsFoundByComparingIt) {
    using Lags = std::vector<double>;
    const Lags right(6, 0.005), late{-0.12, -0.125, -0.12, -0.115, -0.12, -0.12};
    struct Case {
        const char* name;
        Lags a, b, c; ///< of the three cameras, in the order of their clips
        int doubted;  ///< clips, all of the second camera
        double offset;
        const char* cure;
        TimecodeFrameRate rate = TimecodeFrameRate::fps25; ///< of the second camera
    };
    for (const Case& one :
         {Case{"one of three", right, late, right, 6, -0.12, "--sound-offset -00:00:00:03 in a scan of this"},
          {"counted at its own rate", right, late, right, 6, -0.12, "--sound-offset -00:00:00:06 in a scan",
           TimecodeFrameRate::fps50},
          {"beside one that is right",
           Lags(3, 0.01),
           Lags(5, 0.13),
           {},
           6,
           0.12,
           "--sound-offset 00:00:00:03"},
          {"all alike, by little", Lags(6, -0.08), Lags(6, -0.08), Lags(6, -0.08), 0, 0, ""},
          {"nothing to compare with", {}, Lags(6, -0.145), {}, 6, -0.16, "--sound-offset -00:00:00:04"},
          {"far away in all clips", {}, Lags(6, 0.135), {}, 6, 0.12, "--sound-offset 00:00:00:03"},
          {"nothing to compare two frames with", {}, Lags(6, -0.08), {}, 0, 0, ""},
          {"rough", right, {-0.12, -0.08, -0.16, -0.1, -0.15, -0.09}, right, 0, 0, ""},
          {"few clips", right, Lags(4, -0.08), right, 0, 0, ""},
          {"few clips, nothing to compare with", {}, Lags(4, -0.145), {}, 0, 0, ""},
          {"less than a frame", right, Lags(6, -0.025), right, 0, 0, ""}}) {
        Shot shot;
        for (int i = 0; i < 6; ++i) {
            const double at = 36000 + 300 * i;
            for (const char* camera : {"/A/A", "/B/B", "/C/C"})
                shot.videos.push_back(clipAt(camera + std::to_string(i) + ".mov", at, 10,
                                             *(camera + 1) == 'B' ? one.rate : TimecodeFrameRate::fps25));
            shot.audios.push_back(recordingAt("/S/T" + std::to_string(i) + ".wav", at - 3, 20));
        }
        for (MediaAsset& video : shot.videos) video.channelCount = 2;
        shot.diagnose();
        HeardSound heard;
        std::map<char, std::vector<UUID>> matches;
        for (const SyncGroup& group : shot.groups) {
            const char camera = group.video.filename[0];
            const Lags& lags = camera == 'A' ? one.a : camera == 'B' ? one.b : one.c;
            matches[camera].push_back(group.audioMatches.front().id);
            if (matches[camera].size() <= lags.size())
                heard.lags[matches[camera].back()] = {lags[matches[camera].size() - 1]};
        }
        shot.doubts =
            SyncDoubts::of({shot.groups, shot.audios, {}, TrimMode::noTrim, {}, FileNames(), &heard.lags});
        EXPECT_EQ(shot.count(Kind::constantOffset), one.doubted) << one.name;
        // More clips are listened to only where they decide.
        const auto more = SoundLag::pairsToConfirm(shot.groups, heard, {});
        EXPECT_EQ(more.size(), std::string(one.name).starts_with("few clips") ? 1U : 0U) << one.name;
        const auto card = shot.card(Kind::constantOffset);
        if (!card) continue;
        EXPECT_NE(card->doubt.cure.text().find(one.cure), std::string::npos) << card->doubt.cure.text();
        EXPECT_EQ(card->doubt.message.find(" microphone was 41 m ") != std::string::npos, one.offset > 0)
            << card->doubt.message;
        for (const UUID& id : card->groupIDs) {
            EXPECT_EQ(shot.groups.find(id)->video.filename[0], 'B');
            EXPECT_NEAR(shot.doubts.byGroup[id].back().suggestion->offsetSeconds, one.offset, 1e-6);
        }
    }
}

/// Takes in a regular rhythm: timecode puts each recording under the clip of the next take.
TEST(HeardClocks, WhatCamerasHeardInOtherRecordingsTellsTheClock) {
    struct Case {
        const char* name;
        std::vector<int> heard; ///< clip by clip: 1 another recording, 0 its own, -1 nothing
        double score;
        int offset, alone; ///< clips with such a doubt
        const char* cure;
    };
    for (const Case& one : {Case{"all", {1, 1, -1, -1, 1, -1}, 5, 6, 0, "--sound-offset -00:02:30:00; lock"},
                            {"from the middle on",
                             {0, -1, 0, 1, -1, 1},
                             5,
                             3,
                             0,
                             "--sound-offset -00:02:30:00 in a scan of this card alone (--exclude"},
                            {"one alone", {0, 0, -1, 1, 0, 0}, 7, 0, 1, "choose 'T4.wav' in the table"},
                            {"one that chance may have made", {-1, -1, -1, 1, -1, -1}, 5.5, 0, 0, ""},
                            {"none", {-1, -1, -1, -1, -1, -1}, 9, 0, 0, ""}}) {
        Shot shot;
        for (int i = 0; i < 7; ++i) {
            const std::string number = std::to_string(i);
            if (i > 0) shot.videos.push_back(clipAt("/CAM/A" + number + ".mov", 36000 + 150 * i, 10));
            shot.audios.push_back(recordingAt("/S/T" + number + ".wav", 36000 - 3 + 150 * (i + 1), 20));
        }
        shot.diagnose();
        std::unordered_map<UUID, HeardLag> lags;
        std::unordered_map<UUID, HeardElsewhere> elsewhere;
        for (std::size_t i = 0; i < one.heard.size(); ++i) { // clip i + 1 has recording i
            const UUID match = shot.groups[i].audioMatches.front().id;
            if (one.heard[i] == 0) lags[match] = {};
            if (one.heard[i] == 1) elsewhere[match] = {shot.audios[i + 1].id, -150, one.score};
        }
        shot.doubts = SyncDoubts::of({.groups = shot.groups,
                                      .recordings = shot.audios,
                                      .rules = {},
                                      .trimMode = TrimMode::noTrim,
                                      .smartAudioResults = {},
                                      .names = FileNames(),
                                      .heardLags = &lags,
                                      .heardElsewhere = &elsewhere});
        EXPECT_EQ(shot.count(Kind::constantOffset), one.offset) << one.name;
        EXPECT_EQ(shot.count(Kind::ambiguous), one.alone) << one.name;
        const auto all = shot.doubts.summary(shot.groups);
        EXPECT_EQ(all.empty(), one.offset + one.alone == 0);
        EXPECT_TRUE(all.empty() || all.front().doubt.cure.text().starts_with(one.cure))
            << all.front().doubt.cure.text();
    }
}

TEST(HeardClocks, AClockThatChangedWithinACardIsToldForThatPartAlone) {
    constexpr double none = 100;
    struct Case {
        const char* name;
        std::vector<double> heard; ///< clip by clip
        int first, behind;         ///< of the clips in doubt
        const char* leftOut;
    };
    for (const Case& one :
         {Case{"from the seventh on",
               {0, 0, 0, none, 0, 0, -3, -3, none, -3, none, none},
               6,
               12,
               "'S/T10[0-5].wav'"},
          {"until it was set",
           {-9, none, -9.02, 0, 0, 0, none, none, none, none, none, 0},
           0,
           3,
           "'S/T10[3-9].wav' --exclude 'S/T1[1-9][0-9].wav'"},
          {"the last two", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, -3, -3}, 10, 12, "'S/T10*.wav'"},
          {"lost and set right", {0, 0, 4, none, none, none, 4, 0, none, none, none, 0}, 2, 7, ""},
          {"one alone", {0, none, none, none, -9, 0, none, none, none, none, none, 0}, 0, 0, ""},
          {"another speed", {0, none, 1, none, 2, none, 3, 3.1, none, 4, none, 5}, 0, 0, ""}}) {
        for (const bool areTwoRecorders : {false, true}) {
            Shot shot;
            for (int i = 0; i < 12; ++i) {
                const double at = 36000 + 410 * i + 17 * i * i;
                shot.videos.push_back(clipAt("/CAM/A" + std::to_string(100 + i) + ".mov", at, 10));
                shot.audios.push_back(recordingAt("/S/T" + std::to_string(100 + i) + ".wav", at - 20, 60));
                shot.audios.back().bextOriginator =
                    areTwoRecorders && i >= one.first && i < one.behind ? "Rental" : "Cart";
            }
            shot.diagnose();
            std::unordered_map<UUID, HeardLag> lags;
            for (std::size_t i = 0; i < 12; ++i)
                if (one.heard[i] != none) lags[shot.groups[i].audioMatches.front().id] = {one.heard[i]};
            shot.doubts =
                SyncDoubts::of({shot.groups, shot.audios, {}, TrimMode::noTrim, {}, FileNames(), &lags});
            for (int i = 0; i < 12; ++i) {
                const SyncGroup& group = shot.groups[static_cast<std::size_t>(i)];
                const bool isIn = i >= one.first && i < one.behind;
                EXPECT_EQ(shot.doubts.has(group.id, {Kind::constantOffset}), isIn)
                    << one.name << ", clip " << i;
                const auto* suggestion = shot.doubts.suggestionFor(group);
                ASSERT_EQ(suggestion != nullptr, isIn && areTwoRecorders) << one.name << ", clip " << i;
                const double part = one.heard[static_cast<std::size_t>(one.first == 0 ? 0 : one.behind - 2)];
                if (suggestion != nullptr && part != none) {
                    EXPECT_NEAR(suggestion->offsetSeconds, part, 0.03) << one.name;
                }
            }
            const auto card = shot.card(Kind::constantOffset);
            EXPECT_TRUE(!card || card->doubt.cure.text().find(one.leftOut) != std::string::npos)
                << card->doubt.cure.text();
        }
    }
}

TEST(HeardClocks, ACameraThatWasSetAnewCostsNoOtherItsSound) {
    const std::string round = "--sound-offset -00:00:02:00 in";
    for (const auto& [other, begin, part, doubted] :
         {std::tuple{std::optional(0.0), std::string("move their sound"), "fills in 'offset_frames'", 3},
          {std::optional(-1.98), round, "(--exclude 'S/T0.wav'", 3},
          {std::optional<double>(), round, "--exclude 'CAM_B' --exclude 'CAM_A/A0.mov'", 6}}) {
        Shot shot;
        for (int i = 0; i < 6; ++i) {
            const double at = 36000 + 410 * i + 17 * i * i;
            for (const std::string camera : {"A", "B"})
                shot.videos.push_back(
                    clipAt("/CAM_" + camera + "/" + camera + std::to_string(i) + ".mov", at, 15));
            shot.audios.push_back(recordingAt("/S/T" + std::to_string(i) + ".wav", at - 5, 35));
        }
        shot.diagnose();
        std::unordered_map<UUID, HeardLag> lags;
        for (const SyncGroup& group : shot.groups) {
            const bool isLater = group.video.filename[1] >= '3', isA = group.video.filename[0] == 'A';
            if (isA || other) lags[group.audioMatches.front().id] = {!isLater ? 0.02 : isA ? -1.98 : *other};
        }
        shot.doubts =
            SyncDoubts::of({shot.groups, shot.audios, {}, TrimMode::noTrim, {}, FileNames(), &lags});
        const auto card = shot.card(Kind::constantOffset);
        ASSERT_TRUE(card);
        const std::string cure = card->doubt.cure.text();
        EXPECT_TRUE(cure.starts_with(begin)) << cure;
        EXPECT_NE(cure.find(part), std::string::npos) << cure;
        const auto& suggestion = card->doubt.suggestion;
        EXPECT_EQ(suggestion.has_value(), other == 0.0);
        EXPECT_EQ(suggestion ? suggestion->offsetSeconds : -2, -2) << "round";
        EXPECT_EQ(std::ssize(card->groupIDs), doubted) << card->doubt.message;
    }
}

/// The other recordings are those of a clock that began again, in the same folder.
TEST(HeardClocks, ALagOfAPartOfAFolderIsSuggestedForItsClips) {
    for (const bool isPart : {true, false}) {
        Shot shot;
        for (int i = 0; i < (isPart ? 8 : 4); ++i) {
            const std::string number = std::to_string(i);
            const double at = 36000 + 410 * i + 17 * i * i;
            shot.videos.push_back(clipAt("/CAM/A" + number + ".mov", at, 10));
            shot.audios.push_back(recordingAt("/S/T" + number + ".wav", at - 4, 20));
        }
        shot.date(shot.videos, "2026-11-20");
        shot.date(shot.audios, "2026-11-20");
        shot.date(shot.audios, "2000-01-01", 4);
        shot.diagnose();
        std::unordered_map<UUID, HeardLag> heard;
        for (std::size_t i = 0; i < 3; ++i) heard[shot.groups[i].audioMatches.front().id] = {-0.24};
        shot.doubts =
            SyncDoubts::of({shot.groups, shot.audios, {}, TrimMode::noTrim, {}, FileNames(), &heard});
        const auto card = shot.card(Kind::constantOffset);
        ASSERT_TRUE(card);
        EXPECT_EQ(card->groupIDs.size(), 4U) << card->doubt.message;
        const auto& suggestion = card->doubt.suggestion;
        ASSERT_EQ(suggestion.has_value(), isPart) << "one call is right for all: " << card->doubt.cure.text();
        EXPECT_EQ(card->doubt.cure.text().find("in one document") != std::string::npos, isPart);
        if (isPart) {
            EXPECT_NEAR(suggestion->offsetSeconds, -0.25, 0.02);
        }
    }
}

TEST(HeardClocks, ACameraThatWasAnHourAheadHasItsRecordingsSuggested) {
    Shot shot;
    for (int i = 0; i < 6; ++i) {
        const double at = 36000 + 410 * i + 17 * i * i;
        const std::string number = std::to_string(i);
        shot.videos.push_back(clipAt("/CAM/A" + number + ".mov", at, 20));
        shot.videos.push_back(clipAt("/CAM2/B" + number + ".mov", at + 3600, 20));
        shot.videos.back().channelCount = 1;
        shot.audios.push_back(recordingAt("/S/T" + number + ".wav", at - 5, 40));
    }
    shot.diagnose();
    HeardClaims heard;
    const FileNames names;
    DoubtInput input{shot.groups, shot.audios, {}, TrimMode::noTrim, {}, names};
    for (const SoundClaim& claim : SyncDoubts::claims(input))
        heard[claim.key()] = {claim.offsetSeconds + 0.02, true};
    EXPECT_FALSE(heard.empty());
    input.heardClaims = &heard;
    shot.doubts = SyncDoubts::of(input);
    EXPECT_EQ(shot.count(Kind::constantOffset), 6);
    EXPECT_EQ(shot.doubts.summary(shot.groups).size(), 1U);
    for (const bool isAround : {false, true}) { // what was heard lies around the hour, or beside it
        std::vector<double> beside =
            isAround ? std::vector{-0.005, 0.09, 0.1} : std::vector{0.16, 0.17, 0.18};
        ASSERT_EQ(heard.size(), beside.size());
        for (auto& [key, claim] : heard) {
            claim.offsetSeconds = static_cast<double>(std::get<2>(key)) + beside.back();
            beside.pop_back();
        }
        shot.doubts = SyncDoubts::of(input);
        const std::string cure = shot.card(Kind::constantOffset)->doubt.cure.text();
        EXPECT_EQ(cure.find("check a clap") == std::string::npos, isAround) << cure;
    }
    for (const SyncGroup& group : shot.groups) {
        if (group.video.filename[0] == 'A') continue;
        const auto& suggestion = shot.doubts.byGroup[group.id].front().suggestion;
        ASSERT_TRUE(suggestion) << group.video.filename;
        const auto index = static_cast<std::size_t>(group.video.filename[1] - '0');
        EXPECT_EQ(suggestion->recordingID, shot.audios[index].id) << group.video.filename;
        EXPECT_NEAR(suggestion->offsetSeconds, 3600, 0.1);
    }
}

TEST(HeardClocks, AClockInDoubtPrecedesTheLengthOfItsSound) {
    Shot shot;
    for (int i = 0; i < 7; ++i) {
        // By timecode the last clip overlaps the end of the first recording.
        const double at = i < 6 ? 36000 + 410 * i + 17 * i * i : 39633;
        const std::string number = std::to_string(i);
        shot.videos.push_back(clipAt("/CAM/A" + number + ".mov", at, 8));
        shot.videos.back().channelCount = 1;
        shot.audios.push_back(recordingAt("/S/T" + number + ".wav", at - 5 + 3600, 40));
    }
    shot.diagnose();
    const HeardClaims none;
    const FileNames names;
    DoubtInput input{shot.groups, shot.audios, {}, TrimMode::noTrim, {}, names};
    input.heardClaims = &none;
    shot.doubts = SyncDoubts::of(input);
    ASSERT_EQ(shot.count(Kind::constantOffset), 7);
    EXPECT_NE(shot.card(Kind::constantOffset)->doubt.message.find("; 7 clips were not listened to"),
              std::string::npos);
    EXPECT_EQ(shot.count(Kind::shortSound), 0);
}

TEST(HeardClocks, OfSeveralRecordingsTheOneThatTheCameraHeardIsNamed) {
    struct Case {
        const char* heard; ///< the end of the message
        std::array<bool, 2> isThere;
        bool mayChooseFirst;
    };
    for (const Case& one : {Case{": 'T.wav' 60.0 s, 'U.wav' 10.0 s", {false, false}, true},
                            {"heard 'T.wav'", {true, false}, true},
                            {"heard 'U.wav'", {false, true}, false},
                            {": 'T.wav' 60.0 s, 'U.wav' 10.0 s", {true, true}, true}}) {
        for (const bool isSettled : {false, true}) {
            Shot shot;
            shot.settlesAll = isSettled;
            shot.videos.push_back(clipAt("/C/A.mov", 36000, 60));
            shot.videos.back().channelCount = 1;
            shot.audios = {recordingAt("/S/T.wav", 35990, 90), recordingAt("/S/U.wav", 36050, 90)};
            shot.diagnose();
            FileNames names;
            for (const MediaAsset& file : shot.audios) names.add(file);
            HeardClaims heard;
            DoubtInput input{shot.groups, shot.audios, {}, TrimMode::noTrim, {}, names};
            const auto asked = SyncDoubts::claims(input);
            ASSERT_EQ(asked.size(), 2U);
            for (const SoundClaim& claim : asked) {
                const bool isFirst = claim.recordingID == shot.audios.front().id;
                heard[claim.key()] = {one.isThere.at(isFirst ? 0 : 1)
                                          ? std::optional(claim.offsetSeconds + 0.02)
                                          : std::nullopt,
                                      true};
            }
            input.heardClaims = &heard;
            shot.doubts = SyncDoubts::of(input);
            if (isSettled && one.isThere[0] && !one.isThere[1]) {
                EXPECT_EQ(shot.count(Kind::ambiguous), 0) << "the chosen one was heard";
                continue;
            }
            ASSERT_EQ(shot.count(Kind::ambiguous), 1);
            const SyncDoubt& doubt = shot.doubts.byGroup.begin()->second.front();
            EXPECT_TRUE(doubt.message.ends_with(one.heard)) << doubt.message;
            EXPECT_EQ(doubt.cure.text().find("--choose first") != std::string::npos,
                      one.mayChooseFirst && !isSettled)
                << doubt.cure.text();
            const bool isOne = one.isThere[0] != one.isThere[1];
            EXPECT_EQ(doubt.suggestion ? doubt.suggestion->recordingID : std::nullopt,
                      isOne ? std::optional(shot.audios[one.isThere[0] ? 0 : 1].id) : std::nullopt);
        }
    }
}

/// A recorder that was an hour late on one card, while another card's sound is right.
TEST(HeardClocks, WhatWasHeardOfACardIsSuggestedForItsOtherClips) {
    Shot shot;
    for (int i = 0; i < 12; ++i) {
        const double at = 36000 + 410 * i + 17 * i * i, late = i < 6 ? 0 : 3600;
        const std::string number = std::to_string(100 + i);
        shot.videos.push_back(clipAt("/CAM/A" + number + ".mov", at, 20));
        shot.videos.back().channelCount = i % 2 == 0 ? 1 : 0;
        shot.audios.push_back(recordingAt((i < 6 ? "/S1/T" : "/S2/T") + number + ".wav", at - 5 + late, 40));
    }
    shot.diagnose();
    HeardClaims heard;
    const FileNames names;
    DoubtInput input{shot.groups, shot.audios, {}, TrimMode::noTrim, {}, names};
    for (const bool areHeard : {false, true}) {
        for (const SoundClaim& claim : SyncDoubts::claims(input))
            if (areHeard) heard[claim.key()] = {claim.offsetSeconds + 0.02, true};
        input.heardClaims = &heard;
        shot.doubts = SyncDoubts::of(input);
        for (std::size_t i = 0; i < shot.groups.size(); ++i) {
            const auto& own = shot.doubts.byGroup[shot.groups[i].id];
            ASSERT_EQ(own.empty(), i < 6) << i;
            if (own.empty()) continue;
            const auto& suggestion = own.front().suggestion;
            ASSERT_EQ(suggestion.has_value(), areHeard) << i;
            if (!areHeard) continue;
            EXPECT_EQ(suggestion->recordingID, shot.audios[i].id);
            EXPECT_NEAR(suggestion->offsetSeconds, -3600, 0.1);
        }
    }
}

/// Beside a recorder that is right, another one whose recordings lie under no clip.
TEST(HeardClocks, WhatTimecodeSuggestsIsToldAsTheCamerasHeardIt) {
    enum class Heard { nothingAsked, there, elsewhere, nothing };
    struct Case {
        const char* name;
        Heard heard;
        bool isOwnHeard, haveMicrophones;
        int doubted;
        const char* cure;
    };
    for (const Case& one :
         {Case{"no microphones", Heard::nothingAsked, false, false, 6, "give this as --sound-offset only"},
          {"nobody listened", Heard::nothingAsked, false, true, 6, "listen before"},
          {"a clock 119.52 s late", Heard::there, true, true, 6, "--sound-offset -00:01:59:13 in a"},
          {"room tone after the takes", Heard::nothing, true, true, 0, ""},
          {"neither of the two", Heard::nothing, false, true, 6, "give this as --sound-offset only"},
          {"cameras that hear nothing", Heard::elsewhere, true, true, 6,
           "give this as --sound-offset only"}}) {
        Shot shot;
        const std::array<double, 6> late{2, 0, 1, -1, 1, -2}; // a different delay after each take
        for (int i = 0; i < 6; ++i) {
            const double at = 36000 + 410 * i + 17 * i * i;
            const std::string number = std::to_string(i);
            shot.videos.push_back(clipAt("/CAM/A" + number + ".mov", at, 20));
            if (one.haveMicrophones) shot.videos.back().channelCount = 1;
            shot.audios.push_back(recordingAt("/CART/T" + number + ".wav", at - 3, 40));
            shot.audios.push_back(
                recordingAt("/BAG/B" + number + ".wav", at + 110 + late.at(static_cast<std::size_t>(i)), 40));
        }
        shot.diagnose();
        std::unordered_map<UUID, HeardLag> lags;
        for (const SyncGroup& group : shot.groups)
            if (one.isOwnHeard) lags[group.audioMatches.front().id] = {};
        HeardClaims heard;
        const FileNames names;
        DoubtInput input{shot.groups, shot.audios, {}, TrimMode::noTrim, {}, names, &lags};
        if (one.heard != Heard::nothingAsked) input.heardClaims = &heard;
        const auto asked = SyncDoubts::claims(input);
        EXPECT_EQ(asked.size(), one.haveMicrophones ? 3U : 0U) << one.name;
        for (const SoundClaim& claim : asked)
            heard[claim.key()] = {one.heard == Heard::there ? std::optional(claim.offsetSeconds + 0.48)
                                                            : std::nullopt,
                                  one.heard != Heard::elsewhere};
        shot.doubts = SyncDoubts::of(input);
        EXPECT_EQ(shot.count(Kind::constantOffset), one.doubted) << one.name;
        const auto card = shot.card(Kind::constantOffset);
        const std::string cure = card ? card->doubt.cure.text() : one.cure;
        EXPECT_TRUE(cure.starts_with(one.cure)) << one.name << ": " << cure;
    }
}

/// A camera that counts non-drop and was set at ten o'clock, read as drop frame.
TEST(HeardClocks, LagsThatGrowWithTheTimeOfDayTellTheRate) {
    Shot shot;
    for (int i = 0; i < 4; ++i) {
        const std::string number = std::to_string(i);
        shot.videos.push_back(
            clipAt("/CAM/A" + number + ".mov", 36336 + 400 * i, 10, TimecodeFrameRate::fps29_97));
        shot.audios.push_back(recordingAt("/S/T" + number + ".wav", 36297 + 400 * i, 20));
    }
    const MatchRules rules{.timecodeRate = TimecodeFrameRate::fps29_97d};
    shot.diagnose(rules);
    EXPECT_EQ(shot.count(Kind::timecodeRate), 4) << "an offset at the stated rate does as well";
    Shot two = shot; // adds a camera of that rate, which has its sound
    for (int i = 0; i < 4; ++i)
        two.videos.push_back(clipAt("/CAMB/B" + std::to_string(i) + ".mov", 36301 + 400 * i, 10,
                                    TimecodeFrameRate::fps29_97d));
    two.diagnose(rules);
    ASSERT_EQ(two.count(Kind::timecodeRate), 4) << "an offset would move that of the other camera alone";
    EXPECT_NE(
        two.card(Kind::timecodeRate)->doubt.cure.text().find("--tc-rate 29.97NDF --sound-offset 00:00:3"),
        std::string::npos)
        << two.card(Kind::timecodeRate)->doubt.cure.text();
    std::unordered_map<UUID, HeardLag> heard;
    for (const SyncGroup& group : shot.groups) heard[group.audioMatches.front().id] = {0.02};
    shot.doubts =
        SyncDoubts::of({shot.groups, shot.audios, rules, TrimMode::noTrim, {}, FileNames(), &heard});
    EXPECT_TRUE(shot.doubts.isEmpty()) << "heard in place";
    for (const SyncGroup& group : shot.groups) {
        const AudioMatch& match = group.audioMatches.front();
        heard[match.id] = {-3 - match.syncOffsetSeconds};
    }
    shot.doubts =
        SyncDoubts::of({shot.groups, shot.audios, rules, TrimMode::noTrim, {}, FileNames(), &heard});
    ASSERT_TRUE(shot.card(Kind::timecodeRate));
    EXPECT_TRUE(shot.card(Kind::timecodeRate)
                    ->doubt.cure.text()
                    .starts_with("--tc-rate 29.97NDF --sound-offset 00:00:35:29;"))
        << shot.card(Kind::timecodeRate)->doubt.cure.text();
    // Beside another camera the offset of each clip is filled in.
    Shot beside = shot;
    for (int i = 0; i < 4; ++i)
        beside.videos.push_back(clipAt("/CAMB/B" + std::to_string(i) + ".mov", 36301 + 400 * i, 10,
                                       TimecodeFrameRate::fps29_97d));
    beside.diagnose(rules);
    heard.clear();
    for (const SyncGroup& group : beside.groups)
        if (group.video.filename[0] == 'A')
            heard[group.audioMatches.front().id] = {-3 - group.audioMatches.front().syncOffsetSeconds};
        else
            heard[group.audioMatches.front().id] = {0};
    beside.doubts =
        SyncDoubts::of({beside.groups, beside.audios, rules, TrimMode::noTrim, {}, FileNames(), &heard});
    for (const SyncGroup& group : beside.groups) {
        const auto& own = beside.doubts.byGroup[group.id];
        ASSERT_EQ(own.empty(), group.video.filename[0] == 'B');
        if (own.empty()) continue;
        ASSERT_TRUE(own.front().suggestion) << own.front().cure.text();
        EXPECT_NEAR(own.front().suggestion->offsetSeconds, heard[group.audioMatches.front().id].seconds, 0.1);
    }
    // The given rate differs from that of the clips, and no label of the sound is read.
    const MatchRules film{.timecodeRate = TimecodeFrameRate::fps23_976};
    two.videos.erase(two.videos.begin(), two.videos.begin() + 4);
    for (std::size_t i = 0; i < 4; ++i)
        two.audios[i].bextTimeReference = samples(36333 + 400 * static_cast<double>(i));
    two.diagnose(film);
    heard.clear();
    for (std::size_t i = 0; i < 4; ++i)
        heard[two.groups[i].audioMatches.front().id] = {-3 -
                                                        two.groups[i].audioMatches.front().syncOffsetSeconds};
    two.doubts = SyncDoubts::of({two.groups, two.audios, film, TrimMode::noTrim, {}, FileNames(), &heard});
    ASSERT_TRUE(two.card(Kind::timecodeRate));
    EXPECT_TRUE(two.card(Kind::timecodeRate)
                    ->doubt.cure.text()
                    .starts_with("--tc-rate 29.97DF --sound-offset -00:00:34:29;"))
        << two.card(Kind::timecodeRate)->doubt.cure.text();
}

/// A clock that was set within a day, on one card.
TEST(HeardClocks, RecordingsThatWereHeardInPlaceSayNothingOfTheOthers) {
    Shot shot;
    const std::array starts{36307, 36628, 36963, 37312, 37675, 38052};
    for (std::size_t i = 0; i < starts.size(); ++i) {
        const int late = i < starts.size() / 2 ? 0 : 3600;
        shot.videos.push_back(clipAt("/CAM/A" + std::to_string(i) + ".mov", starts.at(i), 10));
        shot.videos.back().channelCount = 2;
        shot.audios.push_back(recordingAt("/S/T" + std::to_string(i) + ".wav", starts.at(i) - 3 + late, 20));
    }
    shot.diagnose();
    std::unordered_map<UUID, HeardLag> heard;
    for (const SoundLag::Pair& pair : SoundLag::pairsToHear(shot.groups)) heard[pair.matchID] = {0};
    EXPECT_EQ(heard.size(), 3U);
    shot.doubts = SyncDoubts::of({shot.groups, shot.audios, {}, TrimMode::noTrim, {}, FileNames(), &heard});
    EXPECT_EQ(shot.count(Kind::constantOffset), 3);
}

} // namespace
} // namespace orvane::test::doubts
