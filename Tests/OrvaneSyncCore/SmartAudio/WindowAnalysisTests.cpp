#include "OrvaneSyncCore/Services/SmartAudio/WindowAnalysis.h"
#include "Support/Test.h"

namespace orvane {
namespace {

/// A track whose windows have these levels; each peak is twice the level.
TrackAnalysis trackOfLevels(const std::vector<float>& levels) {
    TrackAnalysis analysis;
    for (const float level : levels) analysis.add(level, 2 * level, 0.25F);
    return analysis;
}

std::string text(const std::vector<WindowedBestSegment>& segments) {
    std::string result;
    for (const auto& one : segments)
        result += "T" + std::to_string(one.bestTrackIndex) + " " +
                  std::to_string(one.startSeconds).substr(0, 4) + "-" +
                  std::to_string(one.endSeconds).substr(0, 4) + " ";
    return result;
}

TEST(WindowAnalysis, gatesSpeechByLevelAlone) {
    EXPECT_EQ(WindowAnalysis::levelDB(0), -200);
    EXPECT_EQ(WindowAnalysis::levelDB(1), 0);
    const TrackAnalysis analysis = trackOfLevels({0, 0.0031622F, 0.0031624F, 1});
    EXPECT_EQ(analysis.windowHasSpeech, (std::vector<bool>{false, false, true, true}));
    EXPECT_EQ(analysis.speechRatio(), 0.5F);
    EXPECT_EQ(analysis.maxPeak, 2);
    TrackAnalysis joined = trackOfLevels({0, 0.0031622F});
    joined.append(trackOfLevels({0.0031624F, 1}));
    EXPECT_EQ(joined, analysis);
}

TEST(WindowAnalysis, summarisesChannels) {
    const std::vector<TrackAnalysis> tracks{
        trackOfLevels({0.1F, 0.3F}), {}, trackOfLevels({0, 0}), trackOfLevels({4e-7F, 4e-7F})};
    const auto stats = WindowAnalysis::channelStats(tracks);
    ASSERT_EQ(stats.size(), 4U);
    EXPECT_EQ(stats[0], (ChannelStats{1, 0.2F, 0.6F, 0.25F, stats[0].dynamicRangeDB, 1.0F}));
    EXPECT_NEAR(stats[0].dynamicRangeDB, 9.5424, 1e-4); // a ratio of 3
    EXPECT_EQ(stats[1], (ChannelStats{2, 0, 0, 0, 0, 0}));
    EXPECT_EQ(stats[2], (ChannelStats{3, 0, 0, 0.25F, 0, 0}));
    EXPECT_EQ(stats[3].dynamicRangeDB, 0); // its peak is too low to count
    // Large floats, whose sum is infinite.
    EXPECT_EQ(trackOfLevels({3e38F, 3e38F}).averageRMS(), 3e38F);
}

TEST(WindowAnalysis, framesFollowTheFirstTrack) {
    const std::vector<TrackAnalysis> tracks{
        trackOfLevels({0.1F, 0.2F}), trackOfLevels({0.3F}), {}, trackOfLevels({0, 0, 0})};
    const auto frames = WindowAnalysis::frames(tracks);
    ASSERT_EQ(frames.size(), 2U);
    using SmartAudioBlockRouter::WindowMetrics;
    EXPECT_EQ(frames[0].perChannel,
              (std::vector<WindowMetrics>{
                  {1, 0.1F, 0.2F, true, 0.25F}, {2, 0.3F, 0.6F, true, 0.25F}, {4, 0, 0, false, 0.25F}}));
    EXPECT_EQ(frames[1].index, 1);
    EXPECT_EQ(frames[1].perChannel,
              (std::vector<WindowMetrics>{{1, 0.2F, 0.4F, true, 0.25F}, {4, 0, 0, false, 0.25F}}));
    EXPECT_TRUE(WindowAnalysis::frames({}).empty());
    EXPECT_TRUE(WindowAnalysis::frames(std::vector<TrackAnalysis>{{}, trackOfLevels({1})}).empty());
}

TEST(WindowAnalysis, findsTheBestTrackWindowByWindow) {
    const float loud = 0.5F, soft = 0.1F, silent = 0.001F;
    const auto check = [&](const char* rule, const std::vector<TrackAnalysis>& tracks, const char* segments) {
        EXPECT_EQ(text(WindowAnalysis::computePerWindowBestSegments(tracks, 0.25, 0.5)), segments) << rule;
    };
    check("no tracks", {}, "");
    check("no windows of track 1", {{}, trackOfLevels({loud})}, "");
    check("nobody speaks", {trackOfLevels({0, 0, 0}), trackOfLevels({silent, silent, silent})},
          "T1 0.00-0.75 ");
    check("the lower track of two equal ones", {trackOfLevels({soft, soft}), trackOfLevels({soft, soft})},
          "T1 0.00-0.50 ");
    check("a short run joins the one before it",
          {trackOfLevels({loud, loud, loud, loud, soft, loud, loud, loud, loud}),
           trackOfLevels({soft, soft, soft, soft, loud, soft, soft, soft, soft})},
          "T1 0.00-1.25 T1 1.25-2.25 ");
    check("the first run is kept", {trackOfLevels({soft, loud, loud}), trackOfLevels({loud, soft, soft})},
          "T2 0.00-0.25 T1 0.25-0.75 ");
    check("half a second is long enough",
          {trackOfLevels({loud, loud, soft, soft}), trackOfLevels({soft, soft, loud, loud})},
          "T1 0.00-0.50 T2 0.50-1.00 ");
    check("a track that has ended does not count", {trackOfLevels({soft, soft, soft}), trackOfLevels({loud})},
          "T2 0.00-0.25 T1 0.25-0.75 ");
    std::vector<BlockDecision> blocks(3);
    for (std::size_t i = 0; i < 3; ++i) {
        blocks[i].startSeconds = static_cast<double>(i);
        blocks[i].endSeconds = static_cast<double>(i + 1);
    }
    blocks[0].activeTrack = 2;
    blocks[2].activeTrack = 1;
    EXPECT_EQ(text(WindowAnalysis::toLegacyWindowedSegments(blocks)), "T2 0.00-1.00 T1 2.00-3.00 ");
}

} // namespace
} // namespace orvane
