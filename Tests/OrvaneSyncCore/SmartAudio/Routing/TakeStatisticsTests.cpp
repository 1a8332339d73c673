#include "OrvaneSyncCore/Services/SmartAudio/MaterialDetection.h"
#include "OrvaneSyncCore/Services/SmartAudio/TakeDefault.h"
#include "OrvaneSyncCore/Services/SmartAudio/TakeStatistics.h"
#include "OrvaneSyncCore/SmartAudio/Routing/TakePatterns.h"

#include <gtest/gtest.h>

namespace orvane::test {
namespace {

using namespace SmartAudioBlockRouter;
constexpr double nearTo = 1e-4; // the levels go through 32-bit floats

TEST(TakeStatistics, EachTrackIsMeasuredOverItsOwnWindows) {
    const auto check = [&](const char* name, const Pattern& pattern, double floorDB, double crestDB,
                           double coverage, double varianceDB) {
        const TakeStatistics stats = computeChannelStats(take({pattern}));
        ASSERT_EQ(stats.size(), 1U) << name;
        const ChannelRouteStats& s = stats.at(1);
        EXPECT_EQ(s.trackIndex, 1);
        EXPECT_NEAR(s.noiseFloorDB, floorDB, nearTo) << name;
        EXPECT_NEAR(s.typicalCrestFactorDB, crestDB, nearTo) << name;
        EXPECT_DOUBLE_EQ(s.speechCoverage, coverage) << name;
        EXPECT_NEAR(s.rmsVarianceDB, varianceDB, nearTo) << name;
        EXPECT_EQ(s.takeDominance, 0) << "alone, no track dominates";
    };
    check("no sound at all", {{10, silent}}, -65, 6, 0, 0);
    check("speech throughout", {{10, -20, 9}}, -25, 9, 1, 0);
    check("a fifth below: the position is past it", {{2, -60}, {8, -30, 10}}, -30, 10, 0.8, 12);
    check("the window at a fifth, from the quietest", {{2, -60}, {window, -40}, {7.75, -30}}, -40, 6, 0.8,
          11.97654);
    check("more than a fifth below", {{2.5, -60}, {7.5, -30}}, -60, 6, 0.75, 12.9904);
    check("digital silence is not the room", {{9, silent}, {1, -40}}, -40, 6, 0.1, 0);
    check("below -75 dBFS is not the room, but varies", {{5, -80}, {5, -40}}, -40, 6, 0.5, 20);
    check("quieter than the range", {{10, -70}}, -65, 6, 0, 0);
    check("peaks no higher than the mean give no crest", {{10, -20, 0}}, -25, 6, 1, 0);
    check("the upper of two middle crests", {{5, -20, 4}, {5, -20, 12}}, -25, 12, 1, 0);
    check("crests without speech do not count", {{5, -60, 30}, {1, -20, 5}}, -60, 5, 1.0 / 6, 14.9071);
    check("one window", {{window, -30}}, -30, 6, 1, 0);
    EXPECT_TRUE(computeChannelStats({}).empty());
}

TEST(TakeStatistics, DominanceIsTheRankByMeanLevel) {
    const TakeStatistics stats =
        computeChannelStats(take({{{4, -20}}, {{4, -40}}, {{2, -40}}, {{4, silent}}, {{4, -20}}}));
    const std::pair<int, double> ranks[] = {{4, 0}, {2, 0.25}, {3, 0.5}, {1, 0.75}, {5, 1}};
    for (const auto& [track, rank] : ranks) EXPECT_EQ(stats.at(track).takeDominance, rank) << track;
    EXPECT_EQ(stats.at(3).speechCoverage, 1) << "a track that ended early counts its own windows";
}

TEST(MaterialDetection, DensityAndChangesOfTheFirstMinuteDecide) {
    using enum MaterialCharacter;
    // Two speakers take turns on two tracks; `quiet` seconds at the end have no speech.
    const auto dialog = [](int turns, double turnSeconds, double quiet) {
        std::vector<Pattern> tracks(2);
        for (int i = 0; i < turns; ++i) {
            tracks[0].push_back({turnSeconds, i % 2 == 0 ? -20.0 : -30.0});
            tracks[1].push_back({turnSeconds, i % 2 == 0 ? -30.0 : -20.0});
        }
        for (Pattern& track : tracks) track.push_back({quiet, silent});
        return take(tracks);
    };
    Pattern turns;
    for (int i = 0; i < 30; ++i) turns.insert(turns.end(), {{1, -20}, {1, -30}});
    const auto check = [&](const char* name, const std::vector<PerWindowFrame>& frames,
                           MaterialCharacter expected) {
        EXPECT_EQ(detectMaterialCharacter(frames, window), expected) << name;
    };
    check("nothing", {}, standardDialog);
    check("no speech", dialog(0, 1, 60), actionAtmo);
    check("density 0.4 is dialog", dialog(1, 24, 36), standardDialog);
    check("one window less is action", dialog(1, 23.75, 36.25), actionAtmo);
    check("density 0.7 is no interview", dialog(1, 42, 18), standardDialog);
    check("density above it is", dialog(1, 42.25, 17.75), interview);
    check("7 changes a minute", dialog(8, 7.5, 0), interview);
    check("8 changes a minute", dialog(9, 6.5, 1.5), standardDialog);
    check("20 changes a minute", dialog(21, 2.75, 2.25), standardDialog);
    check("21 changes a minute", dialog(22, 2.5, 5), fastDialog);
    check("changes in a sparse minute", dialog(50, 0.25, 47.5), actionAtmo);
    check("a single change in half a second counts per second at least", dialog(2, 0.25, 0), fastDialog);
    check("what follows the first minute says nothing", dialog(1, 60, 600), interview);
    check("equal levels belong to the first track", take({{{60, -20}}, turns}), interview);
}

TEST(TakeDefault, IsolatedTracksHavePriorityOverThoseThatSpeakMost) {
    struct Track {
        const char* source;
        double coverage, varianceDB;
    };
    const auto check = [&](const char* name, const std::vector<Track>& tracks,
                           const std::set<int>& candidates, std::optional<int> expected) {
        TakeStatistics stats;
        std::vector<ChannelClassification> classifications;
        for (const Track& t : tracks) {
            const int track = static_cast<int>(stats.size()) + 1;
            stats[track] = {track, -60, 6, 0, t.coverage, t.varianceDB};
            classifications.push_back(classified(track, ChannelKind::lav, t.source));
        }
        EXPECT_EQ(pickTakeDefault(candidates, stats, classifications), expected) << name;
    };
    check("no tracks", {}, {}, std::nullopt);
    check("an isolated track with enough speech", {{"iXML: Boom", 0.9, 1}, {"iXML: ISO 3", 0.25, 9}}, {}, 2);
    check("a mix named so is one, in any case", {{"iXML: Boom", 0.9, 1}, {"iXML: iSo Mix", 0.3, 9}}, {}, 2);
    check("too little speech in it", {{"iXML: Iso Mix", 0.2, 1}, {"iXML: Boom", 0.9, 9}}, {}, 2);
    check("the steadiest isolated, the first on a tie", {{"iso", 0.9, 5}, {"iso", 0.3, 4}, {"iso", 1, 4}}, {},
          2);
    check("too little speech anywhere", {{"a", 0.39, 1}, {"b", 0.1, 1}}, {}, std::nullopt);
    check("just enough", {{"a", 0.4, 1}}, {}, 1);
    check("more speech wins beyond 0.05", {{"a", 0.5, 1}, {"b", 0.56, 9}}, {}, 2);
    check("within it the steadier", {{"a", 0.54, 9}, {"b", 0.5, 8}}, {}, 2);
    check("the first on a tie", {{"a", 0.5, 8}, {"b", 0.5, 8}}, {}, 1);
    check("only candidates", {{"iso", 1, 1}, {"a", 0.9, 1}, {"b", 0.5, 1}}, {3, 7}, 3);
    check("no candidate that speaks", {{"iso", 1, 1}}, {2}, std::nullopt);
    EXPECT_EQ(pickTakeDefault({}, {{4, {4, -60, 6, 0, 0.9, 1}}}, {}), 4) << "without a classification";
}

} // namespace
} // namespace orvane::test
