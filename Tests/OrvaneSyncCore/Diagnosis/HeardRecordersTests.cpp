#include "OrvaneSyncCore/Services/Waveform/SoundLag.h"
#include "Shot.h"

namespace orvane::test::doubts {
namespace {

TEST(HeardRecorders, FoldersOfOneTakeEachAreOneRecorder) {
    for (const bool hasFolders : {false, true}) {
        Shot shot;
        for (int i = 0; i < 6; ++i) {
            const double at = 36000 + 300 * i;
            const std::string number = std::to_string(i);
            shot.videos.push_back(clipAt("/CAM/A" + number + ".mov", at, 10));
            shot.videos.back().channelCount = 2;
            const std::string take = hasFolders ? "/SD/ZOOM" + number + "/" : "/SD/ALL/";
            for (const char* channel : {"_Tr1.wav", "_Tr2.wav"})
                shot.audios.push_back(recordingAt(take + number + channel, at - 4, 20));
        }
        for (int i = 0; i < 4; ++i) { // another recorder, under clips of its own
            const double at = 50000 + 300 * i;
            shot.videos.push_back(clipAt("/CAM2/B" + std::to_string(i) + ".mov", at, 10));
            shot.audios.push_back(recordingAt("/SD/BAG/B" + std::to_string(i) + ".wav", at - 4, 20));
        }
        shot.diagnose();
        std::unordered_map<UUID, HeardLag> heard;
        const auto pairs = SoundLag::pairsToHear(shot.groups);
        EXPECT_EQ(pairs.size(), 6U);
        for (const SoundLag::Pair& pair : pairs) {
            EXPECT_TRUE(SoundLag::areOfOneCard(pairs.front(), pair));
            heard[pair.matchID] = {2.415};
        }
        shot.doubts =
            SyncDoubts::of({shot.groups, shot.audios, {}, TrimMode::noTrim, {}, FileNames(), &heard});
        ASSERT_EQ(shot.count(Kind::constantOffset), 6) << hasFolders;
        const std::string cure = shot.card(Kind::constantOffset)->doubt.cure.text();
        EXPECT_TRUE(cure.starts_with("--sound-offset 00:00:02:10 in a scan of this card alone "
                                     "(--exclude 'CAM2' --exclude 'BAG')"))
            << cure;
    }
}

/// Clip and recording of one take have the same number, in their names from the second character on.
int numberOf(const auto& files, const UUID& id) {
    const auto file = std::ranges::find_if(files, [&](const MediaAsset& one) { return one.id == id; });
    return std::stoi(file->filename.substr(1));
}

/// Compares until there is nothing left to compare. `isHeard`: whether a clip's camera hears the recording,
/// by their numbers. Recordings begin 3 s before their clips.
void compare(Shot& shot, const auto& isHeard) {
    const std::unordered_map<UUID, HeardLag> lags;
    const FileNames names;
    HeardClaims claims;
    DoubtInput input{shot.groups, shot.audios, {}, TrimMode::noTrim, {}, names, &lags};
    input.heardClaims = &claims;
    std::map<UUID, UUID> videoOf;
    for (const SyncGroup& group : shot.groups) videoOf[group.id] = group.video.id;
    for (std::size_t before = 1; before != claims.size();) {
        before = claims.size();
        for (const SoundClaim& claim : SyncDoubts::claims(input)) {
            const bool isFound = isHeard(numberOf(shot.videos, videoOf.at(claim.clipID)),
                                         numberOf(shot.audios, claim.recordingID));
            claims[claim.key()] = {isFound ? std::optional(-2.985) : std::nullopt, true};
            const auto file = std::ranges::find(shot.audios, claim.recordingID, &MediaAsset::id);
            EXPECT_FALSE(file->filename.ends_with("_2.wav")) << "is compared with the other file of its take";
        }
    }
    shot.doubts = SyncDoubts::of(input);
}

TEST(HeardRecorders, AClockThatWasSetOnACardWithoutSoundIsHeardInTheRecordingsOfAnotherCamera) {
    struct Case {
        int heard;                  ///< clips whose cameras hear their takes
        bool areMono = false;       ///< each take is two files
        double shortSeconds = 12;   ///< length of every second clip
        bool isChanceHeard = false; ///< the clip with another take's sound hears this one as well
    };
    constexpr int clips = 12, byChance = 3;
    for (const Case& given :
         {Case{clips}, Case{clips, true}, Case{clips, true, 8}, Case{2}, Case{clips, false, 8, true}}) {
        Shot shot;
        const auto errorOf = [](int clip) { return clip < 7 ? 242.0 : -55.0; };
        double at = 36000;
        for (int i = 0; i < clips; ++i) {
            const double seconds = i % 2 == 1 ? given.shortSeconds : 12;
            const std::string number = std::to_string(i);
            shot.videos.push_back(clipAt("/A/A" + number + ".mov", at, seconds));
            shot.videos.push_back(clipAt("/B/B" + number + ".mov", at + errorOf(i), seconds));
            shot.videos.back().channelCount = 2;
            shot.audios.push_back(recordingAt("/S/T" + number + "_1.wav", at - 3, 20));
            if (given.areMono) shot.audios.push_back(recordingAt("/S/T" + number + "_2.wav", at - 3, 20));
            at += i == byChance ? errorOf(i) + 1 : 320 + 11 * (i % 3);
        }
        shot.diagnose();
        compare(shot, [&](int clip, int recording) {
            return clip < given.heard && (clip == recording || (given.isChanceHeard && clip == byChance &&
                                                                recording == byChance + 1));
        });
        for (const SyncGroup& group : shot.groups) {
            const int number = numberOf(shot.videos, group.video.id);
            const auto* suggestion = shot.doubts.suggestionFor(group);
            const bool isExpected = group.video.filename[0] == 'B' && given.heard == clips &&
                                    !(given.isChanceHeard && number == byChance);
            ASSERT_EQ(suggestion != nullptr, isExpected) << group.video.filename << " of " << given.heard;
            if (!isExpected) continue;
            EXPECT_EQ(suggestion->offsetSeconds, errorOf(number));
            EXPECT_EQ(numberOf(shot.audios, *suggestion->recordingID), number);
        }
    }
}

TEST(HeardRecorders, OfTwoTakesOfOneTimeInOneFolderTheOneThatWasHeardIsSuggested) {
    Shot shot;
    constexpr int clips = 4;
    for (int unit = 0; unit < 2; ++unit)
        for (int i = 0; i < clips; ++i) {
            const double at = 36000 + 700 * i + 1.5 * unit;
            const std::string number = std::to_string(10 * (unit + 1) + i);
            shot.videos.push_back(clipAt("/CAMS/M" + number + ".mov", at, i % 2 == 0 ? 12 : 8));
            shot.videos.back().channelCount = 2;
            shot.audios.push_back(recordingAt("/SOUNDS/0" + number + ".wav", at - 3, 20));
        }
    for (auto* files : {&shot.videos, &shot.audios}) shot.date(*files, "2024-05-17");
    shot.diagnose();
    compare(shot, [](int clip, int recording) { return clip == recording; });
    for (const SyncGroup& group : shot.groups) {
        ASSERT_EQ(group.audioMatches.size(), 2U);
        const auto* suggestion = shot.doubts.suggestionFor(group);
        ASSERT_NE(suggestion, nullptr) << group.video.filename;
        EXPECT_EQ(numberOf(shot.audios, *suggestion->recordingID), numberOf(shot.videos, group.video.id));
    }
}

} // namespace
} // namespace orvane::test::doubts
