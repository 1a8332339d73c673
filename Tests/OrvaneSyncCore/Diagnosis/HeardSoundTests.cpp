#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"
#include "OrvaneSyncCore/Services/Diagnosis/HandledClips.h"
#include "OrvaneSyncCore/Services/Diagnosis/NotCompared.h"
#include "Shot.h"

#include <functional>

namespace orvane::test::doubts {
namespace {

/// Eight clips, an hour and a half apart, each with the recordings of these folders.
struct HeardShot : Shot {
    std::unordered_map<UUID, HeardLag> lags;
    std::unordered_map<UUID, HeardElsewhere> elsewhere;
    HeardClaims claims;
    std::unordered_set<UUID> unheard;

    explicit HeardShot(const std::vector<std::string>& sound) {
        for (int i = 0; i < 8; ++i) {
            const double at = 25200 + 5400 * i;
            videos.push_back(clipAt("/CAM/A" + std::to_string(i) + ".mov", at, 15));
            videos.back().channelCount = 2;
            for (const std::string& folder : sound)
                audios.push_back(recordingAt(folder + std::to_string(i) + ".wav", at - 5, 35));
        }
    }
    void match() { groups = SyncEngine().match(videos, audios, MatchRules()); }
    void hear() {
        doubts = SyncDoubts::of({.groups = groups,
                                 .recordings = audios,
                                 .rules = {},
                                 .trimMode = TrimMode::noTrim,
                                 .smartAudioResults = {},
                                 .names = FileNames(),
                                 .heardLags = &lags,
                                 .heardElsewhere = &elsewhere,
                                 .heardClaims = &claims,
                                 .unheard = &unheard});
    }
    const UUID& match(std::size_t clip) const { return groups[clip].audioMatches.front().id; }
};

TEST(HeardSound, AClockThatRunsFastIsToldWithTheOffsetOfEachClip) {
    struct Case {
        const char* name;
        double perSecond, jitter;
        int told;        ///< clips with the doubt: all but those within a frame
        double step = 0; ///< seconds, from the fifth clip on
        std::optional<std::vector<double>> otherHeard = {}; ///< heard by another camera beside it
    };
    for (const Case& one : {Case{"50 ppm", -5e-5, 0.02, 7},
                            {"a camera without microphone beside it", -5e-5, 0.02, 14, 0, {{}}},
                            {"a camera that heard no drift", -5e-5, 0.02, 7, 0, {{0.04, 0.04, 0.04}}},
                            {"no drift", 0, 0.02, 0},
                            {"no line", -5e-5, 0.6, 0},
                            {"too little", -2e-6, 0.02, 0},
                            {"counted at 48.048 kHz", -1e-3, 0.02, 7},
                            {"two cards on one line", -5e-5, 0.02, 14, 0, {{0, -0.27, -0.54}}},
                            {"two clocks", 0, 0, 0, 0.2}}) {
        HeardShot shot({"/S/T"});
        if (one.otherHeard)
            for (int i = 0; i < 8; ++i)
                shot.videos.push_back(clipAt("/B/B" + std::to_string(i) + ".mov", 25200 + 5400 * i, 15));
        shot.match();
        if (one.otherHeard)
            for (std::size_t i = 0; i < one.otherHeard->size(); ++i)
                shot.lags[shot.match(8 + i)] = {(*one.otherHeard)[i]};
        for (const std::size_t i : {0, 2, 4, 5, 7})
            shot.lags[shot.match(i)] = {one.perSecond * 5400 * static_cast<double>(i) +
                                        (i % 2 == 0 ? one.jitter : 0) + (i >= 4 ? one.step : 0)};
        shot.hear();
        EXPECT_EQ(shot.count(Kind::drift), one.told) << one.name;
        EXPECT_EQ(shot.count(Kind::constantOffset), one.step == 0 ? 0 : 4) << one.name;
        if (one.told == 0) continue;
        const SyncDoubt& last = shot.doubts.byGroup[shot.groups[6].id].front();
        ASSERT_TRUE(last.suggestion);
        EXPECT_NEAR(last.suggestion->offsetSeconds, one.perSecond * 5400 * 6, 0.05);
        EXPECT_NE(last.message.find(one.perSecond < -5e-4 ? "by 100" : "by 5"), std::string::npos)
            << last.message;
        if (one.told > 7) {
            EXPECT_EQ(shot.doubts.byGroup[shot.groups[14].id].front().suggestion.has_value(),
                      !one.otherHeard->empty())
                << "of a camera alone not sure enough";
        }
    }
}

TEST(HeardSound, OtherSoundThanWhatLiesUnderTheClipsIsToldUnlessACameraHeardIt) {
    struct Case {
        const char *clipDay, *soundDay;
        int unheard, heard;
        int otherDay, otherDate;
        bool areCopied = false; ///< the recordings are there twice
        double thirdDay = 0;    ///< seconds of the day of a recording of a third day
    };
    for (const Case& one : {Case{nullptr, nullptr, 3, 0, 8, 0},
                            {nullptr, nullptr, 2, 0, 0, 0},
                            {nullptr, nullptr, 3, 1, 0, 0},
                            {"2024-05-17", "2024-05-18", 3, 0, 0, 8},
                            {"2024-05-17", "2024-05-18", 0, 0, 0, 8},
                            {"2024-05-17", "2024-05-18", 0, 4, 0, 0},
                            {"2024-05-17", "2024-05-18", 0, 0, 0, 8, true},
                            {"2024-05-17", "2024-05-18", 0, 4, 0, 0, true},
                            {"2024-05-17", "2024-05-18", 0, 4, 0, 0, false, 3000},
                            {"2024-05-17", "2024-05-18", 0, 4, 0, 8, false, 25195}}) {
        HeardShot shot(one.areCopied ? std::vector<std::string>{"/S/T", "/S2/T"}
                                     : std::vector<std::string>{"/S/T"});
        if (one.clipDay != nullptr) shot.date(shot.videos, one.clipDay);
        if (one.soundDay != nullptr) shot.date(shot.audios, one.soundDay);
        if (one.thirdDay > 0) {
            std::vector<MediaAsset> third{recordingAt("/S3/X.wav", one.thirdDay, 35)};
            shot.date(third, "2024-05-25");
            shot.audios.push_back(third.front());
        }
        shot.match();
        int number = 0;
        for (; number < one.unheard; ++number)
            shot.unheard.insert(shot.match(static_cast<std::size_t>(number)));
        for (; number < one.unheard + one.heard; ++number)
            shot.lags[shot.match(static_cast<std::size_t>(number))] = {0.04};
        shot.hear();
        EXPECT_EQ(shot.count(Kind::otherDay), one.otherDay) << number;
        EXPECT_EQ(shot.count(Kind::otherDateFits), one.otherDate) << number;
        if (one.otherDate > 0) {
            EXPECT_EQ(shot.card(Kind::otherDateFits)->doubt.cure.firstWay() != nullptr, one.unheard == 0);
        }
    }
}

/// A camera whose timecode only counts while it runs: once long clips show the error of the dates, dates give
/// the places of short clips.
TEST(HeardSound, ShortClipsAreHeardWhereTheDatesOfTheOthersLead) {
    for (const double off : {0.0, 5.0}) { // error of the third date
        HeardShot shot({});
        shot.videos.clear();
        double counted = 3600;
        for (int i = 0; i < 6; ++i) {
            const std::string number = std::to_string(i);
            const double at = 36000 + 600 * i, length = i < 3 ? 15 : 6;
            shot.videos.push_back(clipAt("/CAM/A" + number + ".mov", counted, length));
            shot.videos.back().channelCount = 2;
            shot.videos.back().contentCreatedDate =
                *dateFromISO8601("2024-05-17T00:00:00Z") +
                std::chrono::seconds(std::lround(at + 7 + (i == 2 ? off : 0)));
            shot.audios.push_back(recordingAt("/S/T" + number + ".wav", at - 5, 35));
            counted += length;
        }
        shot.date(shot.audios, "2024-05-17");
        shot.match();
        const auto ask = [&] {
            DoubtInput input{shot.groups, shot.audios, {}, TrimMode::noTrim, {}, FileNames()};
            input.heardClaims = &shot.claims;
            return SyncDoubts::claims(input);
        };
        for (const SoundClaim& claim : ask()) {
            const auto video = shot.groups.find(claim.clipID)->video.filename;
            const bool isOwn = claim.recordingID == shot.audios[static_cast<std::size_t>(video[1] - '0')].id;
            shot.claims[claim.key()] = {isOwn ? std::optional(-4.985) : std::nullopt, true};
        }
        const auto close = ask();
        EXPECT_EQ(close.size(), off == 0 ? 3U : 0U);
        for (const SoundClaim& claim : close) {
            EXPECT_TRUE(claim.isClose);
            EXPECT_NEAR(claim.offsetSeconds, -5, 0.1);
            shot.claims[claim.key()] = {-4.985, true};
        }
        shot.hear();
        int suggested = 0;
        for (const auto& [id, own] : shot.doubts.byGroup)
            suggested += std::ranges::any_of(own, [](const SyncDoubt& doubt) {
                return doubt.suggestion && doubt.suggestion->recordingID;
            });
        EXPECT_EQ(suggested, off == 0 ? 6 : 3);
    }
}

TEST(HeardSound, SoundThatIsUnderAClipByChanceIsReplacedByWhatWasHeard) {
    HeardShot shot({});
    shot.videos.clear();
    for (int i = 0; i < 6; ++i) {
        const std::string number = std::to_string(i);
        const double at = 3010 + 600 * i; // the second recording is under the first clips by timecode
        shot.videos.push_back(clipAt("/CAM/A" + number + ".mov", 3600 + 15 * i, 15));
        shot.videos.back().channelCount = 2;
        shot.videos.back().contentCreatedDate =
            *dateFromISO8601("2024-05-17T00:00:00Z") + std::chrono::seconds(std::lround(at));
        shot.audios.push_back(recordingAt("/S/T" + number + ".wav", at - 5, 35));
    }
    shot.date(shot.audios, "2024-05-17");
    shot.match();
    ASSERT_EQ(shot.groups[1].primaryAudio()->filename, "T1.wav");
    DoubtInput input{shot.groups, shot.audios, {}, TrimMode::noTrim, {}, FileNames()};
    input.heardClaims = &shot.claims;
    for (const SoundClaim& claim : SyncDoubts::claims(input)) {
        const auto video = shot.groups.find(claim.clipID)->video.filename;
        const bool isOwn = claim.recordingID == shot.audios[static_cast<std::size_t>(video[1] - '0')].id;
        shot.claims[claim.key()] = {isOwn ? std::optional(-4.985) : std::nullopt, true};
    }
    shot.hear();
    for (const SyncGroup& group : shot.groups) {
        const auto* suggestion = shot.doubts.suggestionFor(group);
        ASSERT_NE(suggestion, nullptr) << group.video.filename;
        const auto own = std::ranges::find(shot.audios, suggestion->recordingID, &MediaAsset::id);
        EXPECT_EQ(own->filename[1], group.video.filename[1]);
        EXPECT_EQ(suggestion->isAlone, group.video.filename == "A1.mov") << "it has it, elsewhere";
    }
}

/// The camera is 34 s behind the recorder at ten o'clock, and counts 23.976 where the recorder counts 24.
TEST(HeardSound, ClocksThatRunApartBesideTheClipsHaveTheOffsetOfEachClip) {
    const auto startOf = [](int clip) { return 36000.0 + 500 * clip + 23 * clip * clip; };
    const auto aheadAt = [](double at) { return 34 + (at - 36000) / 1001; };
    for (const bool isOfCamera : {false, true}) { // another camera has the recordings in place
        HeardShot shot({});
        shot.videos.clear();
        for (int i = 0; i < 8; ++i) {
            const std::string number = std::to_string(i);
            const double at = startOf(i), recorded = at + aheadAt(at);
            shot.videos.push_back(clipAt("/CAM/A" + number + ".mov", at, i == 5 ? 8 : 12));
            shot.videos.back().channelCount = 2;
            if (isOfCamera) shot.videos.push_back(clipAt("/B/B" + number + ".mov", recorded, 12));
            shot.audios.push_back(recordingAt("/S/T" + number + ".wav", recorded - 6, 30));
        }
        shot.match();
        const auto soundOf = [&](const SyncGroup& group) -> const MediaAsset& {
            return shot.audios[static_cast<std::size_t>(group.video.filename[1] - '0')];
        };
        DoubtInput input{shot.groups, shot.audios, {}, TrimMode::noTrim, {}, FileNames()};
        input.heardClaims = &shot.claims;
        for (std::size_t before = 1; before != shot.claims.size();) {
            before = shot.claims.size();
            for (const SoundClaim& claim : SyncDoubts::claims(input)) {
                const bool isOwn = claim.recordingID == soundOf(*shot.groups.find(claim.clipID)).id;
                shot.claims[claim.key()] = {isOwn ? std::optional(-5.985) : std::nullopt, true};
            }
        }
        shot.hear();
        for (const SyncGroup& group : shot.groups) {
            const auto* suggestion = shot.doubts.suggestionFor(group);
            ASSERT_EQ(suggestion != nullptr, group.video.filename[0] == 'A') << group.video.filename;
            if (suggestion == nullptr) continue;
            EXPECT_EQ(suggestion->recordingID, soundOf(group).id);
            EXPECT_NEAR(suggestion->offsetSeconds, -aheadAt(startOf(group.video.filename[1] - '0')), 0.02);
        }
    }
}

TEST(HeardSound, ClipsOfOneClockLieByOneOffsetAsItWasHeard) {
    for (const double ahead : {3600.12, 3600.0, 3599.84}) {
        HeardShot shot({"/S/T"});
        for (MediaAsset& file : shot.audios) *file.bextTimeReference += samples(ahead);
        shot.diagnose();
        ASSERT_TRUE(shot.card(Kind::constantOffset));
        EXPECT_NE(shot.card(Kind::constantOffset)->doubt.message.find("is known to"), std::string::npos)
            << "nobody listened";
        shot.audios.push_back(recordingAt("/S/U.wav", 0, 35));
        shot.audios.back()
            .bextTimeReference.reset(); // so that no file shows that the others count time of day
        shot.match();
        const std::array delays{0.02, 0.03, 0.03, 0.06, 0.01, 0.03, 0.02, 0.04};
        for (std::size_t i = 0; i < shot.groups.size(); ++i)
            shot.claims[SoundClaim{shot.groups[i].id, shot.audios[i].id, 0, 0}.key()] = {-5 + delays.at(i),
                                                                                         true};
        shot.hear();
        for (const SyncGroup& group : shot.groups) {
            const auto& told = shot.doubts.byGroup[group.id];
            const auto own = std::ranges::find_if(told, [](const auto& one) { return !!one.suggestion; });
            ASSERT_NE(own, told.end());
            EXPECT_NEAR(own->suggestion->offsetSeconds, -ahead, 0.02) << group.video.filename;
        }
        ASSERT_TRUE(shot.card(Kind::constantOffset));
        const std::string cure = shot.card(Kind::constantOffset)->doubt.cure.text();
        EXPECT_TRUE(cure.starts_with("--sound-offset " + offsetText(-ahead, TimecodeFrameRate::fps25)))
            << cure;
        EXPECT_EQ(cure.find("check a clap") == std::string::npos, ahead == 3600) << cure;
    }
    const HeardClock film = heardClock(3603.62, TimecodeFrameRate::fps23_976);
    EXPECT_NEAR(film.seconds, 3603.6, 1e-6);
    EXPECT_TRUE(film.isExact);
}

TEST(HeardSound, AnOffsetThatTimecodeTellsRoughlyStaysInDoubtWhereCamerasHeardItOtherwise) {
    HeardShot shot({"/S/T"});
    for (MediaAsset& file : shot.audios) *file.bextTimeReference -= samples(11);
    const MatchRules rules{.soundOffsetSeconds = 11};
    for (const bool isRight : {true, false}) {
        shot.groups = SyncEngine().match(shot.videos, shot.audios, rules);
        shot.lags.clear();
        for (const std::size_t i : {1, 3, 6})
            shot.lags[shot.match(i)] = {isRight ? 0.03
                                                : std::array{0.0, 2.0, 0.0, 4.4, 0.0, 0.0, -1.4}.at(i)};
        shot.doubts =
            SyncDoubts::of({shot.groups, shot.audios, rules, TrimMode::noTrim, {}, FileNames(), &shot.lags});
        EXPECT_EQ(shot.count(Kind::constantOffset), isRight ? 0 : 8);
        if (isRight) continue;
        const auto& suggestion = shot.doubts.byGroup[shot.groups[3].id].back().suggestion;
        ASSERT_TRUE(suggestion);
        EXPECT_NEAR(suggestion->offsetSeconds, 4.4, 0.02);
    }
}

TEST(HeardSound, AGivenOffsetIsRefutedByCamerasThatHeardTheSoundWhereItsFilesPlaceIt) {
    struct Case {
        const char* name;
        std::size_t heardAtStated, inPlace; ///< clips
        double atStated;                    ///< seconds from there
        const char* cure;                   ///< null: no doubt
    };
    for (const Case& one : {Case{"where the file says", 3, 0, 0.04, "--sound-offset 00:00:00:00"},
                            {"two seconds from there", 3, 0, 2.0, "--sound-offset 00:00:02:00"},
                            {"with the offset", 0, 3, 0, nullptr},
                            {"nowhere", 0, 0, 0, "check a clap"}}) {
        HeardShot shot({});
        shot.audios = {recordingAt("/S/LAV.wav", 18000, 60000)};
        const MatchRules rules{.soundOffsetSeconds = 3600};
        const SmartAudioResults results{};
        const FileNames names;
        const auto diagnosed = [&] {
            return DoubtInput{.groups = shot.groups,
                              .recordings = shot.audios,
                              .rules = rules,
                              .trimMode = TrimMode::noTrim,
                              .smartAudioResults = results,
                              .names = names,
                              .heardLags = &shot.lags,
                              .heardClaims = &shot.claims,
                              .unheard = &shot.unheard};
        };
        shot.groups = SyncEngine().match(shot.videos, shot.audios, rules);
        for (std::size_t i = 0; i < one.inPlace; ++i) shot.lags[shot.match(i)] = {0.03};
        const auto claims = SyncDoubts::claims(diagnosed());
        EXPECT_EQ(claims.size(), one.inPlace == 0 ? 3U : 0U) << one.name;
        for (std::size_t i = 0; i < claims.size(); ++i) {
            EXPECT_NEAR(claims[i].offsetSeconds,
                        18000 - SyncEngine::tcRange(shot.groups.find(claims[i].clipID)->video)->startSeconds,
                        1e-6);
            shot.claims[claims[i].key()] = {
                i < one.heardAtStated ? std::optional(claims[i].offsetSeconds + one.atStated) : std::nullopt,
                true};
        }
        for (std::size_t i = 0; i < shot.groups.size() && one.inPlace == 0; ++i)
            shot.unheard.insert(shot.match(i));
        shot.doubts = SyncDoubts::of(diagnosed());
        const auto card = shot.card(Kind::constantOffset);
        ASSERT_EQ(card.has_value(), one.cure != nullptr) << one.name;
        if (card) {
            EXPECT_TRUE(card->doubt.cure.text().starts_with(one.cure)) << card->doubt.cure.text();
        }
        EXPECT_EQ(shot.count(Kind::otherDay), 0) << one.name;
    }
}

TEST(HeardSound, OfTwoRecordersTheOneThatWasHeardStays) {
    constexpr double late = 1.44; // by which the second recorder is heard later if the first is in place
    for (int i = 0; i < 8; ++i) {
        const int heard = i % 4 - 1;    // none, the first, the other, both
        const bool areTwo = i / 4 == 1; // two cameras
        SCOPED_TRACE(i);
        HeardShot shot({"/S/BAG/B", "/S/CART/T"});
        for (std::size_t clip = 1; areTwo && clip < 8; clip += 2) {
            shot.videos[clip] = clipAt("/CAM2/B" + std::to_string(clip) + ".mov",
                                       25200 + 5400 * static_cast<double>(clip), 15);
            shot.videos[clip].channelCount = 1;
        }
        shot.date(shot.videos, "2024-05-17");
        shot.date(shot.audios, "2024-05-17");
        shot.match();
        for (const SyncGroup& group : shot.groups)
            for (std::size_t match = 0; match < group.audioMatches.size(); ++match) {
                const auto& [id, audio, offset, overlap] = group.audioMatches[match];
                const bool isHeard = std::cmp_equal(heard, match) || heard == 2;
                shot.claims[SoundClaim{group.id, audio->id, offset, 0}.key()] = {
                    isHeard      ? std::optional(offset)
                    : heard == 0 ? std::optional(offset + late)
                                 : std::nullopt,
                    true};
            }
        shot.hear();
        EXPECT_EQ(shot.count(Kind::ambiguous), 8);
        const bool isOneHeard = heard == 0 || heard == 1;
        const SyncDoubt& doubt = shot.doubts.byGroup[shot.groups[0].id].front();
        const CureWay* way = doubt.cure.firstWay();
        ASSERT_EQ(way != nullptr, isOneHeard);
        if (way != nullptr) {
            EXPECT_EQ(way->options.front().value, heard == 0 ? "CART" : "BAG");
        }
        EXPECT_EQ(doubt.suggestion.has_value(), isOneHeard);
        EXPECT_EQ(doubt.message.ends_with("and the other 1.44 s later"), heard == 0) << doubt.message;
        EXPECT_EQ(doubt.cure.text().find("--sound-offset 00:00:01:11") != std::string::npos, heard == 0)
            << doubt.cure.text();
        EXPECT_EQ(doubt.cure.text().find("--exclude 'BAG' or --exclude 'CART'") != std::string::npos,
                  areTwo && heard == 2)
            << doubt.cure.text();
    }
}

/// The bag recorder is 2.3 s behind, and ran alone for the last three clips.
TEST(HeardSound, OfTwoRecordersTheOneThatIsBehindIsTakenOffOrMoved) {
    for (const bool wasCartSetAgain : {false, true}) {
        HeardShot shot({"/S/BAG/B", "/S/CART/T"});
        std::erase_if(shot.audios, [](const MediaAsset& file) { return file.url.path >= "/S/CART/T5"; });
        shot.date(shot.videos, "2024-05-17");
        shot.date(shot.audios, "2024-05-17");
        shot.match();
        for (const std::size_t clip : {0, 3, 7}) shot.lags[shot.match(clip)] = {2.315};
        for (const std::size_t clip : {0, 2, 4}) // the others are not measured
            for (const AudioMatch& match : shot.groups[clip].audioMatches) {
                const bool isCart = match.audio->filename.front() == 'T';
                const double off = isCart ? (wasCartSetAgain && clip == 4 ? 4 : 0) : 2.315;
                shot.claims[SoundClaim{shot.groups[clip].id, match.audio->id, match.syncOffsetSeconds}
                                .key()] = {match.syncOffsetSeconds + off, true};
            }
        shot.hear();
        for (std::size_t clip = 0; clip < 8; ++clip) {
            SCOPED_TRACE(clip);
            const SyncGroup& group = shot.groups[clip];
            const SyncDoubt::Suggestion* suggestion = shot.doubts.suggestionFor(group);
            ASSERT_EQ(suggestion == nullptr, wasCartSetAgain && (clip == 3 || clip == 4));
            if (suggestion == nullptr) continue;
            EXPECT_EQ(suggestion->isAlone, clip < 5);
            EXPECT_NEAR(suggestion->offsetSeconds, clip < 5 ? 0 : 2.3, 0.001);
            if (clip < 5) {
                EXPECT_EQ(suggestion->recordingID, group.audioMatches[1].audio->id);
            }
        }
    }
}

/// Two clips of two days, at one time of day, of which one microphone heard its recording.
TEST(HeardSound, TheRecordingThatNoOtherClipHasIsSuggested) {
    for (const bool isHeard : {true, false}) {
        HeardShot shot({"/S/T"});
        shot.videos.push_back(clipAt("/CAM/A8.mov", 25202, 15));
        shot.videos.back().channelCount = 2;
        shot.audios.push_back(recordingAt("/S/T8.wav", 25199, 35));
        shot.match();
        for (const SyncGroup& group : shot.groups)
            for (const AudioMatch& match : group.audioMatches) {
                const bool isOwn =
                    isHeard && group.video.filename == "A0.mov" && match.audio->filename == "T0.wav";
                shot.claims[SoundClaim{group.id, match.audio->id, match.syncOffsetSeconds}.key()] = {
                    isOwn ? std::optional(match.syncOffsetSeconds) : std::nullopt, true};
            }
        shot.hear();
        const auto other =
            std::ranges::find(shot.groups, "A8.mov", [](const auto& one) { return one.video.filename; });
        const SyncDoubt::Suggestion* suggestion = shot.doubts.suggestionFor(*other);
        ASSERT_EQ(suggestion != nullptr, isHeard);
        if (isHeard) {
            EXPECT_EQ(suggestion->recordingID, shot.audios.back().id);
        }
    }
}

TEST(HeardSound, CamerasThatCouldNotBeComparedAreCounted) {
    HeardShot shot({"/S/T"});
    for (std::size_t i = 0; i < 3; ++i)
        shot.videos.push_back(clipAt("/B/B" + std::to_string(i) + ".mov", 25200 + 5400 * double(i), 15));
    shot.match();
    SyncDoubts doubts;
    const auto foldersOf = [&](const HeardSound* heard) {
        std::string text;
        for (const auto& camera : NotCompared::of(shot.groups, heard, doubts).cameras)
            text += camera.folder + " " + std::to_string(camera.clips) +
                    (camera.reason == NotCompared::Reason::noSound ? " " : " sound ");
        return text;
    };
    EXPECT_EQ(foldersOf(nullptr), "/B 3 /CAM 8 sound ");
    HeardSound heard;
    const auto clip =
        std::ranges::find(shot.groups, "A0.mov", [](const auto& one) { return one.video.filename; });
    heard.lags[clip->audioMatches.front().id] = {0.01};
    EXPECT_EQ(foldersOf(&heard), "/B 3 ");
    for (const SyncGroup& group : shot.groups) // clips in doubt are counted there
        if (group.video.filename == "B2.mov" || group.video.filename == "A1.mov")
            doubts.byGroup[group.id] = {{Kind::shortSound, "", {}}};
    EXPECT_EQ(foldersOf(&heard), "/B 2 ");
    doubts = {};
    for (const SyncGroup& group : shot.groups) // the editor looked at two
        if (group.video.filename == "B0.mov" || group.video.filename == "B1.mov")
            shot.groups.update(group.id, [&](SyncGroup& own) {
                own.isLocked = group.video.filename == "B0.mov";
                own.manualAudioOffsetSeconds = own.isLocked ? 0 : 0.04;
            });
    EXPECT_EQ(foldersOf(&heard), "/B 1 ");
    struct Case {
        const char* why;
        std::function<void(MediaAsset& video)> change;
    };
    for (const Case& one :
         {Case{"8 clips in '/CAM' have no sound", [](MediaAsset& video) { video.channelCount = 0; }},
          Case{"as it takes clips of 3 s:", [](MediaAsset& video) { video.durationSeconds = 2.9; }},
          Case{"as the pictures were taken at another rate",
               [](MediaAsset& video) { video.sensorFrameRate = 100, video.projectFrameRate = 25; }},
          Case{"as it takes three clips with sound",
               [](MediaAsset& video) { video.channelCount = video.filename < "A2" ? 2 : 0; }},
          Case{"as nothing in the sound of the camera is like", [](MediaAsset&) {}}}) {
        HeardShot own({"/S/T"});
        for (MediaAsset& video : own.videos) one.change(video);
        own.match();
        const std::string text = NotCompared::of(own.groups, &heard, {}).text();
        EXPECT_NE(text.find(one.why), std::string::npos) << one.why << " | " << text;
        EXPECT_EQ(text.find('\n'), std::string::npos) << text;
    }
}

TEST(HeardSound, CamerasThatAreFramesApartHaveClocksOfTheirOwn) {
    // 5 and 6 frames. Only beside a camera that is right, the clock of the recorder is right.
    for (const bool isOneRight : {true, false}) {
        Shot shot;
        for (int i = 0; i < 3; ++i) {
            const double at = 36000 + 300 * i;
            for (const char* camera : {"/A/A", "/B/B", "/C/C"})
                shot.videos.push_back(clipAt(camera + std::to_string(i) + ".mov", at, 10));
            shot.audios.push_back(recordingAt("/S/T" + std::to_string(i) + ".wav", at - 3, 20));
        }
        for (MediaAsset& video : shot.videos) video.channelCount = 2;
        shot.diagnose();
        std::unordered_map<UUID, HeardLag> lags;
        for (const SyncGroup& group : shot.groups) {
            const char camera = group.video.filename[0];
            if (camera == 'A' && !isOneRight) continue;
            lags[group.audioMatches.front().id] = {camera == 'A' ? 0.01 : camera == 'B' ? -0.205 : -0.245};
        }
        shot.doubts =
            SyncDoubts::of({shot.groups, shot.audios, {}, TrimMode::noTrim, {}, FileNames(), &lags});
        std::set<double> offsets;
        for (const auto& [id, own] : shot.doubts.byGroup)
            if (own.back().suggestion) {
                offsets.insert(std::round(own.back().suggestion->offsetSeconds * 100));
                EXPECT_EQ(own.back().cure.firstWay(), nullptr) << own.back().cure.text();
            }
        EXPECT_EQ(offsets, isOneRight ? (std::set<double>{-26, -22}) : std::set<double>{});
        EXPECT_EQ(shot.count(Kind::constantOffset), isOneRight ? 6 : 9);
    }
}

TEST(HeardSound, NumbersAreThoseOfTheFramesThatTheFixMoves) {
    for (const auto& [seconds, text] : std::vector<std::pair<double, const char*>>{
             {0.255, "0.24 s"}, {2, "2.0 s"}, {65, "1 min 05 s"}, {3600.28, "1 h 00 min 00 s (01:00:00:07)"}})
        EXPECT_EQ(offsetSpanText(seconds, TimecodeFrameRate::fps25), text);
    HeardShot shot({"/S/T"});
    shot.match();
    for (std::size_t clip = 0; clip < 4; ++clip) shot.lags[shot.match(clip)] = {-0.345};
    shot.hear();
    const auto card = shot.card(Kind::constantOffset);
    ASSERT_TRUE(card);
    EXPECT_NE(card->doubt.message.find(" 0.36 s earlier than "), std::string::npos) << card->doubt.message;
    EXPECT_TRUE(card->doubt.cure.text().starts_with("--sound-offset -00:00:00:09"))
        << card->doubt.cure.text();
}

TEST(HeardSound, FoldersOfUnitsThatAllMicrophonesContradictAreExchanged) {
    for (const int heardNearer : {0, 1}) {
        // Each clip is as much in the recording of the other unit, which its microphone heard.
        HeardShot shot({"/S/X"});
        shot.audios.clear();
        for (std::size_t i = 0; i < shot.videos.size(); ++i) {
            const double at = 25200 + 5400 * static_cast<double>(i);
            const std::string number = std::to_string(i);
            shot.videos[i] = clipAt("/U1/CAM/A" + number + ".mov", at, 15);
            shot.videos[i].channelCount = 2;
            shot.audios.push_back(recordingAt("/U1/SOUND/T" + number + ".wav", at - 5, 35));
            shot.audios.push_back(recordingAt("/U2/SOUND/T" + number + ".wav", at - 9, 35));
        }
        shot.match();
        for (std::size_t i = 0; i < 4; ++i)
            for (const AudioMatch& match : shot.groups[i].audioMatches) {
                const bool isNearer = match.audio->url.path.starts_with("/U1/");
                shot.claims[SoundClaim{shot.groups[i].id, match.audio->id, match.syncOffsetSeconds, 0}
                                .key()] = {isNearer == (static_cast<int>(i) < heardNearer)
                                               ? std::optional(match.syncOffsetSeconds)
                                               : std::nullopt,
                                           true};
            }
        shot.hear();
        const auto card = shot.card(Kind::ambiguous);
        ASSERT_EQ(card.has_value(), heardNearer == 0);
        if (!card) continue;
        EXPECT_EQ(card->groupIDs.size(), 8U) << "those that were not heard as well";
        for (const SyncGroup& group : shot.groups) {
            const SyncDoubt& doubt = shot.doubts.byGroup[group.id].front();
            ASSERT_TRUE(doubt.suggestion);
            for (const AudioMatch& match : group.audioMatches)
                EXPECT_EQ(doubt.suggestion->recordingID == match.audio->id,
                          match.audio->url.path.starts_with("/U2/"));
        }
        // The chosen recordings show the same. Beside one of them, the other unit's stays audible.
        for (SyncGroup group : shot.groups) {
            if (!group.primaryAudio()->url.path.starts_with("/U2/"))
                std::swap(group.audioMatches[0], group.audioMatches[1]);
            if (group.id != shot.groups[5].id) group.audioMatches.pop_back();
            group.matchStatus = MatchStatus::manual();
            shot.groups.update(group.id, [&](SyncGroup& own) { own = group; });
        }
        shot.claims.clear();
        shot.hear();
        ASSERT_EQ(shot.doubts.byGroup.size(), 1U);
        const auto& [clip, own] = *shot.doubts.byGroup.begin();
        EXPECT_EQ(clip, shot.groups[5].id);
        ASSERT_TRUE(own.front().suggestion);
        EXPECT_EQ(own.front().suggestion->recordingID, shot.groups[5].primaryAudio()->id);
    }
}

TEST(HeardSound, ClipsWithTheirWholeTakeAreNotAsked) {
    HeardShot shot({});
    for (std::size_t i = 0; i < shot.videos.size(); ++i)
        for (const int part : {0, 1}) {
            const double at = 25200 + 5400 * static_cast<double>(i) + (part == 0 ? -5 : 13);
            shot.audios.push_back(
                recordingAt("/S/T" + std::to_string(i) + "_" + std::to_string(part + 1) + ".wav", at, 18));
        }
    shot.match();
    ASSERT_EQ(shot.groups[0].audioMatches.size(), 2U);
    EXPECT_TRUE(
        SyncDoubts::claims({shot.groups, shot.audios, {}, TrimMode::noTrim, {}, FileNames()}).empty());
}

TEST(HeardSound, ALongRecordingThatLiesNowhereIsToldByTheClipsThatHeardIt) {
    for (const int heard : {2, 3, 4}) {
        HeardShot shot({"/S/T"});
        MediaAsset lav = recordingAt("/LAV/L.wav", 72000, 9000);
        if (heard == 3) lav.bextTimeReference.reset();
        shot.audios.push_back(lav);
        shot.videos[2].channelCount.reset(); // of the others, a sample hears it
        shot.match();
        int number = 0;
        for (const std::size_t i : {0, 1, 4, 6})
            shot.claims[SoundClaim{shot.groups[i].id, shot.audios.back().id, 0, 0}.key()] = {
                number++ < heard ? std::optional(-1000.015 - 5400 * static_cast<double>(i)) : std::nullopt,
                true};
        shot.hear();
        EXPECT_EQ(shot.count(Kind::constantOffset), heard < 3 ? 0 : 2) << heard << ": of the clips within it";
        if (heard < 3) continue;
        const SyncDoubt doubt = shot.card(Kind::constantOffset)->doubt;
        EXPECT_NE(doubt.message.find("06:43:19"), std::string::npos) << doubt.message;
        EXPECT_EQ(doubt.cure.text().find("10:43:20:00 ") != std::string::npos, heard == 4)
            << doubt.cure.text();
    }
}

} // namespace
} // namespace orvane::test::doubts
