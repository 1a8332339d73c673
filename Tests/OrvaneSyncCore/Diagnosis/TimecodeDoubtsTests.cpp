#include "OrvaneSyncCore/Services/Diagnosis/CureTrial.h"
#include "OrvaneSyncCore/Services/Diagnosis/KeptFiles.h"
#include "Shot.h"

namespace orvane::test::doubts {
namespace {

TEST(TimecodeDoubts, SoundWithoutACommonTimecodeIsInDoubtUntilItIsMoved) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    struct Case {
        const char* name;
        double picture, sound; ///< seconds since midnight; below 0: no timecode
        double header;         ///< of the picture
        double moved;          ///< manual offset
        std::string frames;    ///< suggested; "-": a doubt without a suggestion, "": no doubt
    };
    const Case cases[] = {
        {"a phone, dated as it began", -1, 36000, 36003, 0, "-75"},
        {"dated as it ended", -1, 36000, 36013, 0, "-75"},
        {"a clock of another zone", -1, 36000, 43203, 0, "-"},
        {"a camera that knows no time", 0, 36000, 36003, 0, "-900075"},
        {"a recorder without timecode", 36003, -1, 36003, 0, "-"},
        {"moved", -1, 36000, 36003, -3, ""},
        {"both count", 36003, 36000, 36003, 0, ""},
        {"a night at 00:00:00:00", 0, 86395, 2, 0, ""},
    };
    for (const Case& one : cases) {
        Shot shot;
        shot.videos.push_back(clipAt("/C/A.mov", std::max(one.picture, 0.0), 10));
        shot.videos.back().frameRate = 25;
        shot.audios.push_back(recordingAt("/S/T.wav", std::max(one.sound, 0.0), 20));
        if (one.picture < 0) shot.videos.front().startTimecodeString.reset();
        if (one.sound < 0) shot.audios.front().bextTimeReference.reset();
        shot.videos.front().headerDate =
            *dateFromISO8601("2024-05-17T00:00:00Z") + std::chrono::seconds(std::llround(one.header));
        shot.date(shot.audios, "2024-05-17");
        shot.diagnose();
        shot.groups.update(shot.groups.begin()->id, [&](SyncGroup& own) {
            own.audioMatches = {SyncEngine::matchByTimecode(own.video, shot.audios.front(), {})};
            own.matchStatus = MatchStatus::manual();
            own.manualAudioOffsetSeconds = one.moved;
        });
        shot.derive();
        EXPECT_EQ(shot.count(Kind::noTimecode), one.frames.empty() ? 0 : 1) << one.name;
        EXPECT_EQ(shot.count(Kind::shortSound), 0) << one.name;
        if (shot.doubts.isEmpty()) continue;
        const std::string message = shot.doubts.byGroup.begin()->second.front().message;
        EXPECT_EQ(message.find("an offset of " + one.frames + " frames") != std::string::npos,
                  one.frames != "-")
            << one.name << ": " << message;
        shot.groups.update(shot.groups.begin()->id, [](SyncGroup& own) { own.video.channelCount = 1; });
        HeardClaims heard;
        const FileNames names;
        DoubtInput input{shot.groups, shot.audios, {}, TrimMode::noTrim, {}, names};
        for (const SoundClaim& claim : SyncDoubts::claims(input))
            heard[claim.key()] = {claim.offsetSeconds - 4.175}; // includes the delay to the microphone
        input.heardClaims = &heard;
        const auto byEar = SyncDoubts::of(input).byGroup.begin()->second.front().message;
        EXPECT_NE(byEar.find("heard it with an offset of -105 frames"), std::string::npos) << byEar;
    }
}

TEST(TimecodeDoubts, WhatNoTimecodeBringsTogetherIsFoundByTheMicrophone) {
    struct Case {
        const char* name;
        bool hasPicture, hasSound; ///< whether they have a timecode
        /// Recordings; recordings to analyse; recordings in which the clip is heard.
        int recordings, asked, heardIn;
        const char* told;
        const char* date = nullptr; ///< of the clip
    };
    for (const Case& one :
         {Case{"a phone", false, true, 3, 3, 1, "'T0.wav' in 'A.mov' with an offset of -105 frames"},
          {"a recorder without timecode", true, false, 3, 3, 1, "'T0.wav' in 'A.mov' with an offset of -105"},
          {"sound that repeats", false, true, 3, 3, 2, ""},
          {"more recordings than are listened to, of which the likeliest is heard", false, true, 201, 200, 1,
           "'T100.wav' in 'A.mov' with an offset of -105 frames"},
          {"more recordings than are listened to, of which none is heard", false, true, 201, 200, 0, ""},
          {"of which few ran at the time of its date, in some zone", false, true, 201, 6, 1,
           "'T0.wav' in 'A.mov' with an offset of -105 frames", "2024-05-17T09:06:52Z"},
          {"both count", true, true, 3, 0, 0, ""}}) {
        Shot shot;
        shot.videos.push_back(clipAt("/C/A.mov", 36003, 10));
        shot.videos.back().frameRate = 25;
        shot.videos.back().channelCount = 1;
        if (!one.hasPicture) shot.videos.back().startTimecodeString.reset();
        if (one.date != nullptr) shot.videos.back().headerDate = *dateFromISO8601(one.date);
        FileNames names;
        names.add(shot.videos.back());
        for (int i = 0; i < one.recordings; ++i) {
            shot.audios.push_back(recordingAt("/S/T" + std::to_string(i) + ".wav", 40000 + 100 * i, 20));
            if (!one.hasSound) shot.audios.back().bextTimeReference.reset();
            names.add(shot.audios.back());
        }
        shot.diagnose();
        HeardClaims heard;
        DoubtInput input{shot.groups, shot.audios, {}, TrimMode::noTrim, {}, names};
        const auto asked = SyncDoubts::claims(input);
        EXPECT_EQ(std::ssize(asked), one.asked) << one.name;
        for (int i = 0; i < std::ssize(asked); ++i)
            heard[asked[static_cast<std::size_t>(i)].key()] = {
                i < one.heardIn ? std::optional(-4.175) : std::nullopt, true};
        input.heardClaims = &heard;
        std::string told;
        const auto cards = SyncDoubts::of(input).summary(shot.groups);
        EXPECT_EQ(std::ranges::count_if(cards,
                                        [](const CardDoubt& card) {
                                            return card.doubt.message.find("(200 pairs and 10 hours") !=
                                                   std::string::npos;
                                        }),
                  one.recordings > 200 && one.heardIn == 0 ? 1 : 0)
            << one.name;
        for (const CardDoubt& card : cards) {
            if (card.doubt.message.starts_with("what no timecode")) told = card.doubt.message;
            EXPECT_FALSE(one.heardIn == 1 && card.doubt.cure.text().find("ltc") != std::string::npos)
                << one.name << ": " << card.doubt.cure.text();
        }
        if (!told.empty()) {
            EXPECT_EQ(cards.size(), 1U) << "two cures for one clip";
        }
        EXPECT_EQ(told.empty(), std::string_view(one.told).empty()) << one.name << ": " << told;
        EXPECT_NE(told.find(one.told), std::string::npos) << told;
    }
}

TEST(TimecodeDoubts, ClipsThatCountWhileTheCameraRunsAreNotToBeNamedWhereTheirSoundWasHeard) {
    for (const auto& [heardClips, cure] :
         {std::pair(0U, "no option helps: name the right recording of each clip in"),
          std::pair(2U, "heard in 2 clips; name the right recording of each other clip in"),
          std::pair(4U, "heard in 4 clips; or leave the clips out")}) {
        Shot shot;
        for (const auto& [timecode, date] :
             {std::pair(36000, 36001), {36012, 36301}, {36024, 36700}, {36036, 37100}}) {
            const std::string number = std::to_string(shot.videos.size());
            shot.audios.push_back(recordingAt("/S/T" + number + ".wav", date + 14000, 20));
            shot.videos.push_back(clipAt("/C/C" + number + ".mov", timecode, 12));
            shot.videos.back().channelCount = 1;
            shot.videos.back().headerDate =
                *dateFromISO8601("2024-05-17T00:00:00Z") + std::chrono::seconds(date);
        }
        shot.date(shot.audios, "2024-05-17");
        shot.diagnose();
        HeardClaims heard;
        const FileNames names;
        DoubtInput input{shot.groups, shot.audios, {}, TrimMode::noTrim, {}, names};
        for (const SoundClaim& claim : SyncDoubts::claims(input))
            for (std::size_t i = 0; i < shot.videos.size(); ++i)
                if (shot.groups.find(claim.clipID)->video.id == shot.videos[i].id)
                    heard[claim.key()] = {i < heardClips && claim.recordingID == shot.audios[i].id
                                              ? std::optional(-4.175)
                                              : std::nullopt,
                                          true};
        input.heardClaims = &heard;
        const auto cards = SyncDoubts::of(input).cards;
        const auto card =
            std::ranges::find(cards, Kind::notTimeOfDay, [](const CardDoubt& one) { return one.doubt.kind; });
        ASSERT_NE(card, cards.end());
        EXPECT_NE(card->doubt.cure.text().find(cure), std::string::npos) << card->doubt.cure.text();
    }
}

/// A recorder and a phone that recorded every third take, all without timecode.
TEST(TimecodeDoubts, OfTooManyPairsThoseWithEqualPlacesInTheOrderOfNamesAreListenedTo) {
    constexpr int takes = 30;
    Shot shot;
    std::vector<std::pair<UUID, UUID>> right;
    for (int i = 0; i < takes; ++i) {
        shot.videos.push_back(clipAt("/C/C" + std::to_string(i) + ".mov", 36000 + 300 * i, 12));
        shot.videos.back().channelCount = 1;
        const bool isOnPhone = i % 3 == 2;
        shot.audios.push_back(recordingAt(isOnPhone ? "/P/Voice " + std::to_string(i) + ".wav"
                                                    : "/S/T" + std::to_string(i) + ".wav",
                                          0, 20));
        shot.audios.back().bextTimeReference.reset();
        right.emplace_back(shot.videos.back().id, shot.audios.back().id);
    }
    shot.diagnose();
    FileNames names;
    for (const auto* files : {&shot.videos, &shot.audios})
        for (const MediaAsset& file : *files) names.add(file);
    HeardClaims heard;
    DoubtInput input{shot.groups, shot.audios, {}, TrimMode::noTrim, {}, names};
    input.folders = {FileURL{"/C"}, FileURL{"/P"}, FileURL{"/S"}};
    const auto asked = SyncDoubts::claims(input);
    EXPECT_EQ(asked.size(), 200U);
    int found = 0;
    constexpr int firstLost = 22; // later clips are heard nowhere
    std::set<UUID> lost;
    for (std::size_t i = firstLost; i < takes; ++i) lost.insert(shot.videos[i].id);
    for (const SoundClaim& claim : asked) {
        const UUID& video = shot.groups.find(claim.clipID)->video.id;
        const bool isRight = std::ranges::find(right, std::pair(video, claim.recordingID)) != right.end();
        found += isRight ? 1 : 0;
        heard[claim.key()] = {isRight && !lost.contains(video) ? std::optional(-4.175) : std::nullopt, true};
    }
    EXPECT_EQ(found, takes) << "the recording of each clip is among them";
    input.heardClaims = &heard;
    const SyncDoubts doubts = SyncDoubts::of(input);
    const auto rest = std::ranges::find_if(doubts.cards, [](const CardDoubt& card) {
        return card.doubt.message.find("900 pairs") != std::string::npos;
    });
    ASSERT_NE(rest, doubts.cards.end());
    EXPECT_EQ(rest->groupIDs.size(), lost.size()) << "the clips that were found nowhere";
    const CureWay* way = rest->doubt.cure.firstWay();
    ASSERT_NE(way, nullptr) << rest->doubt.cure.text();
    // The call keeps the clips, their recordings, and as many others as a run listens to.
    const KeptFiles kept(input.folders, *way);
    const auto keptOf = [&](const std::vector<MediaAsset>& files) {
        return std::ranges::count_if(files, [&](const MediaAsset& file) { return kept.has(file); });
    };
    for (std::size_t i = firstLost; i < takes; ++i)
        EXPECT_TRUE(kept.has(shot.videos[i]) && kept.has(shot.audios[i])) << rest->doubt.cure.text();
    EXPECT_LE(keptOf(shot.videos) * keptOf(shot.audios), 200) << rest->doubt.cure.text();
    EXPECT_TRUE(CureTrial(input, doubts, {}).helps(*rest)) << "else it is not printed";
}

TEST(TimecodeDoubts, AConvertedFileIsToldWhereItWouldLieByTheRateThatItStates) {
    struct Case {
        const char* name;
        std::optional<double> stated;
        double countedAt; ///< Hz
        int told;
    };
    for (const Case& one : {Case{"converted", 48000, 48000, 1},
                            {"no rate stated", {}, 48000, 0},
                            {"right by its own rate", 48000, 44100, 0}}) {
        Shot shot;
        shot.videos.push_back(clipAt("/C/A.mov", 36003, 10));
        shot.videos.back().frameRate = 25;
        shot.audios.push_back(recordingAt("/S/T.wav", 36000, 20));
        shot.audios.back().bextTimeReference = static_cast<std::uint64_t>(36000 * one.countedAt);
        shot.audios.back().sampleRate = 44100;
        shot.audios.back().statedStampRate = one.stated;
        shot.diagnose();
        ASSERT_EQ(shot.count(Kind::timecodeRate), one.told) << one.name;
        if (one.told == 0) continue;
        const SyncDoubt& doubt = shot.doubts.byGroup.begin()->second.front();
        EXPECT_EQ(doubt.suggestion.value().recordingID, shot.audios.back().id);
        const double positioned =
            SyncEngine::matchByTimecode(shot.videos[0], shot.audios[0]).syncOffsetSeconds;
        EXPECT_NEAR(positioned + doubt.suggestion->offsetSeconds, -3, 1e-6);
    }
}

TEST(TimecodeDoubts, DatesAreCorrectedByTheClipsBesideThemThatWereHeard) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    for (const bool areOffByOneTime : {true, false}) {
        Shot shot;
        FileNames names;
        for (int i = 0; i < 4; ++i) {
            const int at = 36000 + 300 * i;
            const std::string number = std::to_string(i);
            MediaAsset& video = shot.videos.emplace_back(clipAt("/P/V" + number + ".mov", at, 12));
            video.startTimecodeString.reset();
            video.frameRate = 25;
            video.channelCount = 1;
            video.headerDate = *dateFromISO8601("2024-05-17T00:00:00Z") +
                               std::chrono::seconds(at + (areOffByOneTime || i != 1 ? 3 : 9));
            names.add(video);
            names.add(shot.audios.emplace_back(recordingAt("/S/T" + number + ".wav", at - 5, 40)));
        }
        shot.date(shot.audios, "2024-05-17");
        shot.diagnose();
        HeardClaims heard;
        DoubtInput input{shot.groups, shot.audios, {}, TrimMode::noTrim, {}, names};
        for (const SoundClaim& claim : SyncDoubts::claims(input)) {
            std::size_t own = 0;
            while (shot.groups[own].id != claim.clipID) ++own;
            const bool isHeard = own < 3 && claim.recordingID == shot.audios[own].id;
            heard[claim.key()] = {isHeard ? std::optional(-4.985) : std::nullopt, true};
        }
        input.heardClaims = &heard;
        SyncDoubts doubts = SyncDoubts::of(input);
        const std::string told = doubts.byGroup[shot.groups[3].id].front().message;
        EXPECT_EQ(
            told.ends_with("3 clips beside it that were heard are 3.0 s late: by that, 'T3.wav' lies with "
                           "an offset of about -125 frames"),
            areOffByOneTime)
            << told;
        EXPECT_EQ(told.find("offset") != std::string::npos, areOffByOneTime) << told;
    }
}

TEST(TimecodeDoubts, ARecordingDatedMidnightIsNamedWhereAClipLacksIt) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    struct Case {
        const char* name;
        const char* date; ///< of the recording without a time reference
        double firstPart; ///< seconds of sound before midnight; 0: none
        bool isNamed;
    };
    const Case cases[] = {
        {"all there is", "2024-05-18T12:00:00Z", 0, true},
        {"the second part of a take", "2024-05-18T12:00:00Z", 9, true},
        {"the clip has its sound", "2024-05-18T12:00:00Z", 30, false},
        {"another day", "2024-05-17T12:00:00Z", 0, false},
    };
    for (const Case& one : cases) {
        Shot shot;
        shot.videos.push_back(clipAt("/C/A.mov", 86395, 10));
        shot.date(shot.videos, "2024-05-17");
        if (one.firstPart > 0) shot.audios.push_back(recordingAt("/S/T_1.wav", 86391, one.firstPart));
        shot.audios.push_back(recordingAt("/S/T_0.wav", 80000, 20)); // the recorder knows the time
        shot.date(shot.audios, "2024-05-17");
        shot.audios.push_back(recordingAt("/S/T_2.wav", 0, 11));
        shot.audios.back().bextTimeReference.reset();
        shot.audios.back().contentCreatedDate = dateFromISO8601(one.date);
        shot.diagnose();
        EXPECT_EQ(shot.count(Kind::noTimecode), one.isNamed) << one.name;
        EXPECT_EQ(shot.count(Kind::shortSound), 0) << one.name;
        if (!one.isNamed) continue;
        const auto positioned = SyncEngine::matchByTimecode(shot.videos.front(), shot.audios.back(), {});
        EXPECT_EQ(positioned.syncOffsetSeconds, 5) << one.name;
        EXPECT_EQ(positioned.overlapDurationSeconds, 5) << one.name;
    }
}

TEST(TimecodeDoubts, LinearTimecodeIsProposedWhereItWasNotListenedFor) {
    const std::pair<std::optional<int>, const char*> cases[] = {
        {std::nullopt, "--set ltc.enabled=true"}, {0, "--set ltc.channelIndex=-1"}, {-1, ""}};
    for (const auto& [channel, option] : cases)
        for (const bool isMute : {false, true}) {
            Shot shot;
            shot.videos.push_back(clipAt("/C/A.mov", 0, 10));
            shot.videos.front().startTimecodeString.reset();
            shot.videos.front().channelCount = isMute ? 0 : 1;
            shot.audios.push_back(recordingAt("/S/T.wav", 36000, 20));
            shot.timecodeChannel = channel;
            shot.diagnose();
            const std::string cure = shot.doubts.byGroup.begin()->second.front().cure.text();
            const bool isNone = isMute || *option == '\0';
            EXPECT_NE(cure.find(isNone ? "attach" : option), std::string::npos) << cure;
            EXPECT_EQ(cure.find("--set") == std::string::npos, isNone) << cure;
        }
}

TEST(TimecodeDoubts, EachClipWithoutTimecodeIsToldItsOwnRecording) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    for (const int hoursBehind : {0, 2}) {
        Shot shot;
        for (const int at : {36000, 36700, 37900, 38300}) {
            const std::string number = std::to_string(shot.videos.size() + 1);
            shot.videos.push_back(clipAt("/C/A" + number + ".mov", at, 10));
            shot.videos.back().startTimecodeString.reset();
            shot.videos.back().headerDate =
                *dateFromISO8601("2024-05-17T00:00:00Z") + std::chrono::seconds(at - 3600 * hoursBehind);
            shot.audios.push_back(recordingAt("/S/T" + number + ".wav", at - 4, 20));
        }
        shot.date(shot.audios, "2024-05-17");
        shot.diagnose();
        const auto all = shot.doubts.summary(shot.groups);
        ASSERT_EQ(all.size(), 1U);
        EXPECT_TRUE(all.front().doubt.message.ends_with(
            "with an offset of -96 frames; likewise 'A2.mov' ('T2.wav', -96), 'A3.mov' ('T3.wav', -96), "
            "'A4.mov' ('T4.wav', -96)"))
            << all.front().doubt.message;
    }
}

TEST(TimecodeDoubts, TimecodeIsHeldAgainstTheDatesOfTheFiles) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    struct Clip {
        const char* folder;
        double timecode, header; ///< seconds since midnight; below 0: no timecode
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
        {"most of them by the clock",
         {{"A", 36000, 36001}, {"A", 36300, 36301}, {"A", 36308, 37000}, {"A", 36700, 37392}},
         notTimeOfDay,
         0},
        {"two that were counted while the camera ran, among others",
         with({{"C", 36400, 36401}, {"C", 36500, 36501}, {"B", 36000, 51500}, {"B", 36008, 52008}}),
         notTimeOfDay, 2},
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
        for (const auto& [id, own] : shot.doubts.byGroup) EXPECT_EQ(own.size(), 1U) << one.name;
        if (one.kind == noTimecode && one.doubted > 0) {
            EXPECT_NE(shot.doubts.summary(shot.groups).front().doubt.message.find("'T.wav' was recorded"),
                      std::string::npos);
        }
        if (one.doubted == 4) {
            const std::string message = shot.doubts.summary(shot.groups).front().doubt.message;
            EXPECT_NE(message.find("it counts 24.0 s, and their dates are 18 min 19 s apart"),
                      std::string::npos)
                << message;
        }
        if (one.doubted != 1) continue;
        shot.locks = "0.mov";
        shot.diagnose();
        EXPECT_EQ(shot.count(one.kind), 1) << one.name << ", behind a clip that is decided";
    }
}

} // namespace
} // namespace orvane::test::doubts
