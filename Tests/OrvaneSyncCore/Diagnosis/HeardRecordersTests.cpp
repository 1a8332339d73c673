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
        for (int i = 0; i < 4; ++i) // another recorder
            shot.audios.push_back(recordingAt("/SD/BAG/B" + std::to_string(i) + ".wav", 50000 + 300 * i, 20));
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
        EXPECT_TRUE(cure.starts_with("--sound-offset 00:00:02:10 in a scan of this card alone (--exclude "
                                     "'BAG')"))
            << cure;
    }
}

} // namespace
} // namespace orvane::test::doubts
