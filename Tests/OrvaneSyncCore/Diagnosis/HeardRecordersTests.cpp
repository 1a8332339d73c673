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

TEST(HeardRecorders, AClockThatWasSetOnACardWithoutSoundIsHeardInTheRecordingsOfAnotherCamera) {
    Shot shot;
    constexpr int clips = 12;
    const auto errorOf = [](int clip) { return clip < 7 ? 242.0 : -55.0; };
    for (int i = 0; i < clips; ++i) {
        const double at = 36000 + 320 * i + 11 * (i % 3);
        const std::string number = std::to_string(i + 10);
        shot.videos.push_back(clipAt("/A/A" + number + ".mov", at, 12));
        shot.videos.push_back(clipAt("/B/B" + number + ".mov", at + errorOf(i), 12));
        shot.videos.back().channelCount = 2;
        shot.audios.push_back(recordingAt("/S/T" + number + ".wav", at - 3, 20));
    }
    shot.diagnose();
    const std::unordered_map<UUID, HeardLag> lags;
    const FileNames names;
    for (const int heard : {clips, 2}) {
        HeardClaims claims;
        DoubtInput input{shot.groups, shot.audios, {}, TrimMode::noTrim, {}, names, &lags};
        input.heardClaims = &claims;
        const auto numberOf = [](const auto& files, const UUID& id) {
            const auto file =
                std::ranges::find_if(files, [&](const MediaAsset& one) { return one.id == id; });
            return std::stoi(file->filename.substr(1)) - 10;
        };
        std::map<UUID, UUID> videoOf;
        for (const SyncGroup& group : shot.groups) videoOf[group.id] = group.video.id;
        for (const SoundClaim& claim : SyncDoubts::claims(input)) {
            const int clip = numberOf(shot.videos, videoOf.at(claim.clipID));
            const bool isHeard = clip < heard && clip == numberOf(shot.audios, claim.recordingID);
            claims[claim.key()] = {isHeard ? std::optional(-2.985) : std::nullopt, true};
        }
        shot.doubts = SyncDoubts::of(input);
        for (const SyncGroup& group : shot.groups) {
            const auto* suggestion = shot.doubts.suggestionFor(group);
            const bool isExpected = group.video.filename[0] == 'B' && heard == clips;
            ASSERT_EQ(suggestion != nullptr, isExpected) << group.video.filename << " of " << heard;
            if (!isExpected) continue;
            EXPECT_EQ(suggestion->offsetSeconds, errorOf(numberOf(shot.videos, group.video.id)));
        }
    }
}

} // namespace
} // namespace orvane::test::doubts
