#include "OrvaneSyncCore/Services/Diagnosis/CureTrial.h"
#include "OrvaneSyncCore/Services/Diagnosis/LeftOver.h"
#include "OrvaneSyncCore/Services/Diagnosis/UnmatchedReasons.h"
#include "OrvaneSyncCore/Services/Ingest/ContentMarks.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"

#include "Shot.h"

namespace orvane::test::doubts {
namespace {

TEST(CardDoubts, FilesThatEndEarlyAreToldOnceAFolder) {
    Shot shot;
    for (const auto& [name, at] :
         std::vector<std::pair<std::string, double>>{{"1", 0}, {"2", 300}, {"3", 600}})
        shot.videos.push_back(clipAt("/CAM/A" + name + ".mov", 36000 + at, 30));
    shot.videos.push_back(clipAt("/CAM/A4.mov", 0, 0));
    shot.videos.back().durationSeconds.reset();
    shot.videos.emplace_back(FileURL{"/CAM/A5.mov"}, AssetKind::video);
    shot.videos.back().fileSizeBytes = 0;
    shot.audios = {recordingAt("/S/T1.wav", 35999, 18), recordingAt("/S/T2.wav", 36299, 40),
                   recordingAt("/S/T9.wav", 50000, 3)};
    shot.audios.emplace_back(FileURL{"/S/removed.wav"}, AssetKind::audio);
    shot.audios.emplace_back(FileURL{"/S/T8.wav"}, AssetKind::audio);
    shot.audios.back().fileSizeBytes = 1000;
    for (const auto& [name, share] : std::map<std::string, double>{{"T1.wav", 0.3},
                                                                   {"T2.wav", 0.9},
                                                                   {"T9.wav", 0.5},
                                                                   {"A3.mov", 0.2},
                                                                   {"A4.mov", 0},
                                                                   {"A5.mov", 0}})
        for (auto* files : {&shot.videos, &shot.audios})
            for (MediaAsset& file : *files)
                if (file.filename == name) file.heldShare = share;
    shot.audios.push_back(recordingAt("/S/T7.wav", 60000, 5));
    shot.audios.back().isUnclosed = true;
    shot.diagnose();
    std::vector<std::string> told;
    for (const CardDoubt& card : shot.doubts.cards)
        told.push_back(card.doubt.message + " | " + std::to_string(card.groupIDs.size()));
    const std::string cutOff =
        "'A4.mov' has no index by which it could be read: the recording was cut off before "
        "it was closed, or not copied to its end | 1";
    const std::string shorter = "'T1.wav' ends early: 0:18 of the 1:00 that its header states are there; "
                                "likewise 'T2.wav', 'T9.wav' | 2";
    const std::string unclosed =
        "'T7.wav' was never closed by its recorder: its header does not have the true "
        "length, 0:05 can be used, and its end may be missing | 0";
    EXPECT_EQ(told,
              (std::vector<std::string>{"'A3.mov' ends early: about 0:06 of its 0:30 are there | 1", cutOff,
                                        "'A5.mov' is empty | 1", shorter, unclosed,
                                        "'T8.wav' can't be read: nothing of it looks like a recording | 0"}));
    const auto& own = shot.doubts.byGroup.at(shot.groups.front().id);
    const auto shortSound = std::ranges::find(own, Kind::shortSound, &SyncDoubt::kind);
    ASSERT_NE(shortSound, own.end());
    EXPECT_TRUE(shortSound->cure.text().starts_with("copy 'T1.wav' again from the card, as it ends early"));
    const auto cut = std::ranges::find(own, Kind::cutByTrim, &SyncDoubt::kind);
    ASSERT_NE(cut, own.end());
    EXPECT_NE(cut->message.find("is cut from 30.0 s to 18.0 s"), std::string::npos) << cut->message;
    EXPECT_TRUE(cut->cure.text().starts_with("--set trimMode=video keeps")) << cut->cure.text();
    EXPECT_EQ(shortSound->message, "'A1.mov' " + shortSound->reason);
    const SyncDoubt& second = shot.doubts.byGroup.at(shot.groups[1].id).front();
    EXPECT_EQ(second.reason, "'T2.wav' ends early: 0:40 of the 0:44 that its header states are there");
    EXPECT_NE(shot.doubts.ofCard(second), nullptr);
}

TEST(CardDoubts, APartThatIsMissingByTheNumbersOfARecordingIsReported) {
    struct Case {
        const char* name;
        double pause; ///< between files whose numbers follow each other
        std::vector<std::string> missing;
        std::vector<std::string> reported;
    };
    for (const Case& one : {
             Case{"whole", 0, {}, {}},
             {"a part", 0, {"T2-002"}, {"'T2-001.wav' and 'T2-003.wav' | 1 part between them, 25.0 s | 1"}},
             {"two parts",
              0,
              {"T1-002", "T1-003"},
              {"'T1-001.wav' and 'T1-004.wav' | 2 parts between them, 50.0 s | 1"}},
             {"the end", 0, {"T2-004"}, {}},
             {"numbers that count takes", 40, {"T2-002"}, {}},
         }) {
        Shot shot;
        for (int take = 1; take <= 3; ++take) {
            const double at = 36000 + 600 * take;
            const std::string number = std::to_string(take);
            // Only over the second part.
            shot.videos.push_back(clipAt("/CAM/A" + number + ".mov", at + 28 + one.pause, 10));
            for (int part = 0; part < 4; ++part)
                if (const std::string name = "T" + number + "-00" + std::to_string(part + 1);
                    std::ranges::find(one.missing, name) == one.missing.end())
                    shot.audios.push_back(
                        recordingAt("/S/" + name + ".wav", at + part * (25 + one.pause), 25));
        }
        shot.diagnose();
        std::vector<std::string> reported;
        for (const CardDoubt& card : shot.doubts.cards) {
            if (card.doubt.kind != Kind::splitGap) continue;
            std::string text = card.doubt.message;
            const std::string middle = " are parts of one recording, and by their numbers ";
            const auto at = text.find(middle), end = text.find(" of sound, ");
            ASSERT_TRUE(at != std::string::npos && end != std::string::npos) << text;
            reported.push_back(text.substr(0, at) + " | " +
                               text.substr(at + middle.size(), end - at - middle.size()) + " | " +
                               std::to_string(card.groupIDs.size()));
        }
        EXPECT_EQ(reported, one.reported) << one.name;
        if (one.missing.empty()) continue;
        shot.locks = std::string("A") + one.missing.front()[1] + ".mov";
        shot.diagnose();
        EXPECT_EQ(shot.count(Kind::splitGap), 0) << "lost for good";
        EXPECT_FALSE(shot.card(Kind::splitGap));
    }
}

TEST(CardDoubts, SoundThatRunsAtAnotherSpeed) {
    struct Case {
        const char* name;
        std::vector<std::optional<double>> drifts;
        int doubted;
    };
    const Case cases[] = {
        {"0.1 % too slow", {-0.001, -0.0012, -0.0008, std::nullopt}, 4},
        {"0.1 % too fast, but for one", {0.001, 0.0011, 0.001, 0.0009, 0}, 5},
        {"as it should", {0, 0.0003, -0.0003}, 0},
        {"heard of two clips alone", {-0.001, -0.001, std::nullopt}, 0},
        {"one way and the other", {-0.001, -0.001, -0.001, 0.001, 0.001}, 0},
    };
    for (const Case& one : cases) {
        Shot shot;
        std::unordered_map<UUID, HeardLag> heard;
        for (std::size_t i = 0; i < one.drifts.size(); ++i) {
            const double at = 36000 + 300 * static_cast<double>(i);
            shot.videos.push_back(clipAt("/CAM/A" + std::to_string(i) + ".mov", at, 60));
            shot.audios.push_back(recordingAt("/S/T" + std::to_string(i) + ".wav", at - 2, 70));
        }
        shot.diagnose();
        for (std::size_t i = 0; i < one.drifts.size(); ++i)
            heard[shot.groups[i].audioMatches.front().id] = {-0.3, one.drifts[i]};
        shot.doubts =
            SyncDoubts::of({shot.groups, shot.audios, {}, TrimMode::noTrim, {}, FileNames(), &heard});
        EXPECT_EQ(shot.count(Kind::drift), one.doubted) << one.name;
        EXPECT_EQ(shot.count(Kind::constantOffset) > 0, one.doubted == 0) << one.name;
    }
}

TEST(CardDoubts, ReasonsSayWhatLiesAtThatTime) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    Shot shot;
    shot.videos = {clipAt("/C/A_240517.mov", 36000, 10), clipAt("/C/B_240517.mov", 40000, 10),
                   clipAt("/C/C_240517.mov", 1, 10)};
    shot.audios = {recordingAt("/S/A_240519.wav", 35990, 30), recordingAt("/S/C_240516.wav", 86395, 30)};
    const auto reasons = [&](const MatchRules& rules) {
        shot.diagnose(rules);
        UnmatchedReasons why(
            shot.groups, [&] { return shot.audios; }, rules);
        std::string all;
        for (const SyncGroup& group : shot.groups)
            if (group.isMOS()) all += why.ofClip(group) + "; ";
        for (const MediaAsset& audio : shot.audios) all += why.ofRecording(audio) + "; ";
        return all;
    };
    EXPECT_EQ(reasons({.days = MatchingDays::same}),
              "sound at that time is of 2024-05-19; no sound at that time; sound at that time is of "
              "2024-05-16; the clip at that time is of 2024-05-17; the clip at that time is of 2024-05-17; ");
    shot.audios = {MediaAsset(FileURL{"/S/T.wav"}, AssetKind::audio)};
    shot.audios.front().durationSeconds = 30;
    EXPECT_EQ(reasons({}), "no recording has timecode; no recording has timecode; no recording has timecode; "
                           "no timecode; ");
    EXPECT_EQ(shot.count(Kind::noTimecode), 3);
    shot.audios.front() = MediaAsset(FileURL{"/Atmo/f8/4A=Atmo.wav"}, AssetKind::audio);
    shot.audios.front().durationSeconds = 30;
    shot.diagnose({});
    EXPECT_EQ(shot.count(Kind::noTimecode), 0) << "room tone that the program made";
    shot.audios.clear();
    EXPECT_EQ(reasons({}), "no recordings given; no recordings given; no recordings given; ");
}

TEST(CardDoubts, UnitsThatShootAtOnceHaveTheirOwnSound) {
    struct Case {
        std::string sound; ///< folder of the other recorder, which sorts first
        bool isRecordingMissing, hasClips;
        int doubts;
    };
    for (const Case& one : {Case{"/0/S", false, true, 0}, Case{"/0", true, true, 1},
                            Case{"/0", true, false, 3}, Case{"/1/0", false, false, 4}}) {
        Shot shot;
        for (int i = 0; i < 4; ++i) {
            const std::string number = std::to_string(i);
            const double at = 36000 + 300 * i;
            shot.audios.push_back(recordingAt(one.sound + "/U" + number + ".wav", at - 3, 20));
            if (i < 3 || !one.isRecordingMissing)
                shot.audios.push_back(recordingAt("/1/S/T" + number + ".wav", at - 3, 20));
            shot.videos.push_back(clipAt("/1/A" + number + ".mov", at, 10));
            if (one.hasClips) shot.videos.push_back(clipAt("/0/B" + number + ".mov", at, 10));
        }
        shot.diagnose();
        EXPECT_EQ(shot.count(Kind::ambiguous), one.doubts) << one.sound;
        for (const SyncGroup& group : shot.groups) {
            const std::string& sound = group.primaryAudio()->url.path;
            EXPECT_TRUE(one.doubts > 0 || sound[1] == group.video.url.path[1] || !one.hasClips) << sound;
        }
    }
}

TEST(CardDoubts, TellsWhatAnotherUnitRecordedMeanwhile) {
    struct Case {
        const char* name;
        int together; ///< of the four clips of each unit
        int doubts;
        const char* sound = "/2ND/S/U";
    };
    for (const Case& one : {Case{"units that meet once", 1, 2}, Case{"two cameras of one scene", 3, 0},
                            Case{"a second recorder of one unit", 1, 0, "/MAIN/BAG/U"}}) {
        Shot shot;
        for (int i = 0; i < 4; ++i) {
            const std::string number = std::to_string(i);
            const double at = 36000 + 300 * i, other = at + (i < one.together ? 2 : 100);
            shot.videos.push_back(clipAt("/MAIN/A/A" + number + ".mov", at, 10));
            shot.audios.push_back(recordingAt("/MAIN/S/T" + number + ".wav", at - 3, 20));
            shot.videos.push_back(clipAt("/2ND/C/C" + number + ".mov", other, 10));
            shot.audios.push_back(recordingAt(one.sound + number + ".wav", other - 3, 20));
        }
        shot.diagnose();
        int told = 0;
        for (const auto& [id, own] : shot.doubts.byGroup)
            for (const SyncDoubt& doubt : own)
                told += doubt.message.find("of another unit, which ran") != std::string::npos ? 1 : 0;
        EXPECT_EQ(told, one.doubts) << one.name;
    }
}

TEST(CardDoubts, RecordingsThatCountAlikeMayBeOfTwoDays) {
    const test::TemporaryDirectory folder;
    const std::string sound(100'000, 'x'), broken = std::string(60'000, 'x') + std::string(40'000, '\0');
    struct Case {
        std::string first;
        double heldShare;
        int doubts;
        TakeRole role; ///< of the second recording that the clip lists
    };
    const std::vector<Case> cases{{sound, 1, 0, TakeRole::mirror},
                                  {std::string(100'000, 'y'), 1, 1, TakeRole::alternate},
                                  {broken, 0.6, 0, TakeRole::mirror}};
    for (const Case& one : cases) {
        Shot shot{{clipAt("/C/A.mov", 36000, 10)}, {}, {}};
        for (const char* day : {"1", "2"}) {
            const std::string& held = *day == '1' ? one.first : sound;
            shot.audios.push_back(recordingAt(folder.write(day + std::string("/T.wav"), held), 35999, 20));
            shot.audios.back().fileSizeBytes = sound.size();
        }
        for (const std::size_t i : ContentMarks::missingIn(shot.audios))
            shot.audios[i].contentMark = ContentMarks::of(shot.audios[i].url.path);
        if (one.heldShare < 1) shot.audios.front().heldShare = one.heldShare;
        *shot.audios.front().durationSeconds *= one.heldShare;
        shot.diagnose();
        EXPECT_EQ(shot.count(Kind::otherDay), one.doubts);
        const Take take = takeOf(shot.groups.front(), 1);
        EXPECT_EQ(take.files.at(1).role, one.role);
        if (one.heldShare < 1) {
            const auto cut = shot.card(Kind::cutFile);
            ASSERT_TRUE(cut);
            EXPECT_TRUE(cut->doubt.message.ends_with("; whole copies are here and used: '2/T.wav'") &&
                        cut->groupIDs.empty())
                << cut->doubt.message;
        }
        for (MediaAsset& audio : shot.audios) {
            audio.contentMark.reset();
            audio.contentCreatedDate = dateFromISO8601("2024-05-17T10:00:00Z");
        }
        EXPECT_TRUE(ContentMarks::missingIn(shot.audios).empty()) << "a date says that they are";
    }
}

TEST(CardDoubts, ARecordingThatWasNeverClosedComesBehindAWholeOne) {
    Shot shot{{clipAt("/C/A.mov", 36000, 10)},
              {recordingAt("/1/T.wav", 35999, 20), recordingAt("/2/T.wav", 35999, 20)},
              {}};
    for (const bool isUnclosed : {false, true}) {
        if (isUnclosed) shot.audios.front().isUnclosed = true;
        shot.diagnose();
        EXPECT_EQ(shot.groups.front().primaryAudio()->url.path, isUnclosed ? "/2/T.wav" : "/1/T.wav");
    }
}

TEST(CardDoubts, ALockOfAllItsClipsKeepsWhatIsThereOfADamagedRecording) {
    Shot shot{{clipAt("/C/A.mov", 36000, 5), clipAt("/C/B.mov", 36006, 5)},
              {recordingAt("/S/T.wav", 35999, 20)},
              {}};
    shot.audios.front().heldShare = 0.9;
    shot.diagnose();
    std::vector<UUID> clips;
    for (const SyncGroup& group : shot.groups) clips.push_back(group.id);
    for (std::size_t locked = 0; locked <= clips.size(); ++locked) {
        if (locked > 0)
            shot.groups.update(clips[locked - 1], [](SyncGroup& group) { group.isLocked = true; });
        shot.doubts = SyncDoubts::of({shot.groups, shot.audios, {}, TrimMode::noTrim, {}, FileNames()});
        EXPECT_EQ(shot.count(Kind::cutFile), static_cast<int>(clips.size() - locked));
        EXPECT_EQ(shot.card(Kind::cutFile).has_value(), locked < clips.size());
    }
}

TEST(CardDoubts, ACopyThatBrokeOffAtItsFullSizeIsNotTheSound) {
    const test::TemporaryDirectory folder;
    Shot shot{{clipAt("/C/A.mov", 36000, 10), clipAt("/C/B.mov", 36012, 5)}, {}, {}};
    const std::string sound(200'000, 'x');
    std::string broken = sound;
    std::fill(broken.begin() + 120'000, broken.end(), '\0');
    for (const char* card : {"1", "2", "3"}) {
        const std::string& held = *card == '1' ? broken : sound;
        shot.audios.push_back(recordingAt(folder.write(card + std::string("/T.wav"), held), 35999, 20));
        shot.audios.back().fileSizeBytes = sound.size();
    }
    shot.date(shot.audios, "2024-05-17");
    const auto found = ContentMarks::brokenOffIn(shot.audios, {});
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found.front().recording, 0U);
    EXPECT_NEAR(found.front().heldShare, 0.6, 0.03);
    shot.audios[0].heldShare = found.front().heldShare;
    *shot.audios[0].durationSeconds *= found.front().heldShare;
    shot.diagnose();
    for (const SyncGroup& group : shot.groups)
        EXPECT_TRUE(group.primaryAudio()->url.path.ends_with("/2/T.wav")) << group.video.filename;
    ASSERT_TRUE(shot.card(Kind::cutFile)) << "it may be kept as a copy";
    EXPECT_TRUE(shot.doubts.byGroup.empty()) << "the clips have whole ones";
    EXPECT_TRUE(ContentMarks::brokenOffIn(shot.audios, {}).empty()) << "it says so by itself";
}

/// A recorder that kept one date for two days, and a camera without dates: each of its clips has one
/// recording, except for the third one.
TEST(CardDoubts, RecordingsOfOneDateThatOverlapAreOfTwoDays) {
    struct Case {
        const char* other; ///< beside the third clip, from the 8th second on
        int doubted;       ///< clips before anything was heard
    };
    for (const Case& one : {Case{"/S/T0.wav", 6}, Case{"/S/T4.wav", 0}}) {
        Shot shot;
        for (int i = 0; i < 6; ++i) {
            const double at = 3600 + 200 * i;
            shot.videos.push_back(clipAt("/C/C" + std::to_string(i) + ".mov", at, 12));
            shot.videos.back().channelCount = 1;
            shot.audios.push_back(
                recordingAt("/S/T" + std::to_string(i < 3 ? i + 1 : i + 2) + ".wav", at - 3, 20));
        }
        shot.audios.push_back(recordingAt(one.other, 3600 + 400 + 8, 25));
        shot.date(shot.audios, "2024-05-17");
        shot.diagnose();
        FileNames names;
        DoubtInput input{shot.groups, shot.audios, {}, TrimMode::noTrim, {}, names};
        EXPECT_EQ(shot.count(Kind::otherDay), one.doubted);
        if (one.doubted == 0) continue;
        HeardClaims heard;
        for (const SoundClaim& claim : SyncDoubts::claims(input)) {
            const SyncGroup& group = *shot.groups.find(claim.clipID);
            const bool isFirst = claim.recordingID == group.primaryAudio()->id;
            heard[claim.key()] = {isFirst ? std::optional(claim.offsetSeconds) : std::nullopt, true};
        }
        input.heardClaims = &heard;
        const SyncDoubts doubts = SyncDoubts::of(input);
        ASSERT_EQ(doubts.byGroup.size(), 1U) << "the one with a second recording";
        const auto& [clip, own] = *doubts.byGroup.begin();
        ASSERT_TRUE(own.front().suggestion);
        EXPECT_EQ(own.front().suggestion->recordingID, shot.groups.find(clip)->primaryAudio()->id);
    }
}

TEST(CardDoubts, RecordingsThatADoubtIsAboutAreNotLeftOver) {
    for (const int hour : {0, 3600}) {
        Shot shot;
        for (int i = 0; i < 6; ++i) {
            const std::string number = std::to_string(i);
            shot.videos.push_back(clipAt("/CAM/A" + number + ".mov", 36000 + 700 * i + 40 * (i % 3), 20));
            const double start = 36000 + 700 * i + 40 * (i % 3) + hour - 5;
            shot.audios.push_back(recordingAt("/S/T" + number + ".wav", start, 30));
        }
        shot.videos.push_back(clipAt("/CAM/A6.mov", 70000, 20));
        if (hour == 0) shot.audios.push_back(recordingAt("/S/T6.wav", 80000, 30));
        shot.diagnose();
        std::vector<const MediaAsset*> withoutClip;
        for (const MediaAsset& audio : shot.audios)
            if (hour > 0 || &audio == &shot.audios.back()) withoutClip.push_back(&audio);
        EXPECT_EQ(shot.count(Kind::constantOffset), hour == 0 ? 0 : 6);
        const auto left = LeftOver::of(shot.groups, withoutClip, {}, shot.doubts);
        EXPECT_EQ(left.isEmpty(), hour > 0) << left.text();
    }
}

TEST(ClockDoubts, CountANightAsOneCard) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    Shot shot; // the recorder counts in UTC, five hours ahead: its date changes in the evening
    for (int take = 0; take < 8; ++take) {
        const double at = 17.9 * 3600 + 660 * take;
        shot.videos.push_back(clipAt("/CAM/A" + std::to_string(take) + ".mov", at, 60));
        const double sound = at + 5 * 3600 - 4;
        shot.audios.push_back(
            recordingAt("/S/T" + std::to_string(take) + ".wav", sound - (sound > 86400 ? 86400 : 0), 70));
        shot.date(shot.audios, sound > 86400 ? "2024-05-18" : "2024-05-17", shot.audios.size() - 1);
    }
    shot.date(shot.videos, "2024-05-17");
    shot.diagnose();
    const auto card = shot.card(Kind::constantOffset);
    ASSERT_TRUE(card);
    EXPECT_NE(card->doubt.message.find("8 of 8 clips"), std::string::npos) << card->doubt.message;
    EXPECT_EQ(card->doubt.cure.text(), "--sound-offset -05:00:00:00");
    EXPECT_EQ(card->groupIDs.size(), 8U);
}

TEST(ClockDoubts, TwoRecordersInOneFolderAreTwoCards) {
    Shot shot;
    for (int i = 0; i < 12; ++i) {
        const double at = 36000 + 600 * i + 7 * i * i;
        const std::string number = std::to_string(i + 10);
        shot.videos.push_back(clipAt("/CAM/C" + number + ".mov", at, 60));
        for (const auto& [recorder, ahead] : {std::pair("A", 0), {"B", 3 * 3600}}) {
            shot.audios.push_back(recordingAt("/S/" + (recorder + number) + ".wav", at - 10 + ahead, 80));
            shot.audios.back().bextOriginator = recorder;
        }
    }
    shot.diagnose();
    const auto card = shot.card(Kind::constantOffset);
    ASSERT_TRUE(card);
    EXPECT_TRUE(card->doubt.message.starts_with("the recordings in '/S' ('B10.wav' – 'B21.wav')"))
        << card->doubt.message;
    EXPECT_TRUE(card->doubt.cure.text().starts_with("--sound-offset -03:00:00:00"))
        << card->doubt.cure.text();
}

TEST(CureTrial, RefusesWhatLeavesTheDoubtOrTakesOtherClipsTheirSound) {
    using enum CureOption::Kind;
    Shot shot; // the last recording has the date of the day before
    for (int take = 0; take < 3; ++take) {
        const std::string number = std::to_string(take);
        shot.videos.push_back(clipAt("/F/C/A" + number + ".mov", 36000 + 400 * take, 10));
        shot.audios.push_back(
            recordingAt((take < 2 ? "/F/S/T" : "/F/R/T") + number + ".wav", 35995 + 400 * take, 20));
    }
    for (auto* files : {&shot.videos, &shot.audios}) shot.date(*files, "2024-05-17");
    shot.date(shot.audios, "2024-05-16", 2);
    shot.diagnose();
    const auto all = shot.doubts.summary(shot.groups);
    ASSERT_EQ(all.size(), 1U);
    ASSERT_EQ(all.front().groupIDs.size(), 1U) << all.front().doubt.message;
    const std::vector<CureOption> alone{{exclude, "S"}};
    const struct {
        std::vector<CureOption> options, scan;
        bool helps;
        bool isOfferedForAll = false; // other clips have doubts with the same options
    } cases[] = {{{{soundDate, "2024-05-17"}}, {}, true},
                 {{{soundDate, "2024-05-17"}}, alone, false}, // T2 stays, and two clips lose their sound
                 {{{soundOffset, "00:06:40:00"}}, {{exclude, "R"}}, true}, // the clip in doubt gets T1
                 {{{soundOffset, "00:06:40:00"}}, {}, false},
                 {{{soundOffset, "00:06:40:00"}}, {}, true, true},
                 {{{soundOffset, "01:00:00:00"}}, {}, false},
                 {{{days, "same"}}, {}, true},
                 {{{timecodeRate, "25"}}, {}, false}, // nothing changes
                 {{{setting, "trimMode=overlap"}}, {}, true}};
    FileNames names;
    const MatchRules rules;
    DoubtInput input{shot.groups, shot.audios, rules, TrimMode::commonDuration, {}, names};
    input.folders = {FileURL{"/F"}};
    for (const auto& one : cases) {
        CardDoubt doubt = all.front();
        doubt.doubt.cure = CureWay{one.options};
        if (!one.scan.empty()) doubt.doubt.cure = std::move(doubt.doubt.cure).in(CureScan{"it", one.scan});
        SyncDoubts doubts = shot.doubts; // with that cure
        for (SyncDoubt& own : doubts.byGroup[doubt.groupIDs.front()]) own.cure = doubt.doubt.cure;
        for (const SyncGroup& group : shot.groups)
            if (one.isOfferedForAll && group.id != doubt.groupIDs.front())
                doubts.byGroup[group.id].push_back({Kind::otherDay, "", doubt.doubt.cure});
        EXPECT_EQ(CureTrial(input, doubts, {}).helps(doubt), one.helps) << doubt.doubt.cure.text();
    }
}

} // namespace
} // namespace orvane::test::doubts
