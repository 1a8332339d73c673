#include "OrvaneSyncCore/Services/SmartAudio/BlockGain.h"
#include "OrvaneSyncCore/Services/SmartAudio/BlockSmoothing.h"
#include "OrvaneSyncCore/Services/SmartAudio/BlockSource.h"
#include "OrvaneSyncCore/Services/SmartAudio/ManualOverrides.h"
#include "OrvaneSyncCore/SmartAudio/Routing/TakePatterns.h"

#include <gtest/gtest.h>

namespace orvane::test {
namespace {

using namespace SmartAudioBlockRouter;
using enum BlockKind;
constexpr double nearly = 1e-4;

/// Track 1 is the default, the others are lavs.
BlockSource choose(const std::vector<Level>& levels, double seconds) {
    std::vector<Pattern> patterns;
    std::vector<int> lavs;
    for (const Level& level : levels) {
        patterns.push_back({level});
        if (patterns.size() > 1) lavs.push_back(static_cast<int>(patterns.size()));
    }
    return chooseSourceFor(0, seconds, 1, lavs, take(patterns), window);
}

TEST(BlockSource, ALavTakesOverOnlyWhereItIsPlainlyBetter) {
    const auto check = [&](const char* name, double seconds, const std::vector<Level>& levels, int track,
                           BlockKind kind) {
        const BlockSource source = choose(levels, seconds);
        EXPECT_EQ(source.track, track) << name;
        EXPECT_EQ(source.kind, kind) << name;
    };
    check("a lav louder by less than 10 dB", 2, {{2, -30}, {2, -20.01}}, 1, mix);
    check("by more", 2, {{2, -30}, {2, -19.9}}, 2, lav);
    check("far louder but not loud", 2, {{2, -50}, {2, -25.01}}, 1, mix);
    check("loud enough", 2, {{2, -50}, {2, -24.9}}, 2, lav);
    check("its peak is no higher", 2, {{2, -30, 20}, {2, -16}}, 1, mix);
    check("the loudest of two", 2, {{2, -40}, {2, -20}, {2, -18}}, 3, lav);
    check("the first of two equals", 2, {{2, -40}, {2, -18}, {2, -18}}, 2, lav);
    check("a block of 1 s is too short", 1, {{1, -30}, {1, -12}}, 1, mix);
    check("one of 1.5 s is not", 1.5, {{1.5, -30}, {1.5, -12}}, 2, lav);
    check("a short block is long enough for a rescue", 1, {{1, -56}, {1, -40}}, 2, lav);
    check("the loudest rescues", 2, {{2, -56}, {2, -45}, {2, -44}}, 3, lav);
    check("a lav at -50 dB has no dialog", 2, {{2, -80}, {2, -50.01}}, 1, silence);
    check("a lav 8 dB above does not rescue", 2, {{2, -55.5}, {2, -47.6}}, 1, silence);
    check("a default at -55 dB is heard", 2, {{2, -54.99}, {2, -30}}, 1, mix);
    check("no lavs", 2, {{2, -54}}, 1, mix);
}

TEST(BlockSource, SaysWhyAndGivesThePeakOfWhatIsHeard) {
    const auto check = [&](double seconds, const std::vector<Level>& levels, double peakDB,
                           const char* reason) {
        const BlockSource source = choose(levels, seconds);
        EXPECT_NEAR(source.peakDB, peakDB, nearly) << reason;
        EXPECT_EQ(source.reason, reason);
    };
    check(2, {{2, -30}, {2, -24}}, -24, "default · take-curated source (mean -30.0 dB)");
    check(2, {{2, -30}, {2, -19.9}}, -13.9, "override: lav T2 is +10.1 dB louder than default");
    check(2, {{2, -56}, {2, -40, 9}}, -31, "lav rescue: T2 has dialog (-40.0 dB) while default silent");
    check(2, {{2, -80}, {2, -51}}, -74, "default · block silent (mean -80.0 dB)");
    check(2, {{2, silent}, {2, silent}}, -120, "default · block silent (mean -120.0 dB)");
    check(0, {{2, -20}}, -60, "default (empty block)");
    EXPECT_EQ(choose({{2, -20}}, 0).kind, mix);
}

TEST(BlockSource, ALevelIsTheRootMeanSquareOfTheWindowsThereAre) {
    // Half of the block 20 dB down takes 3 dB off its power.
    const auto source = chooseSourceFor(0, 4, 1, {}, take({{{2, -20}, {2, -80}}}), window);
    EXPECT_EQ(source.reason, "default · take-curated source (mean -23.0 dB)");
    const auto ended = chooseSourceFor(0, 4, 2, {}, take({{{4, -30}}, {{1, -40}}}), window);
    EXPECT_EQ(ended.reason, "default · take-curated source (mean -40.0 dB)") << "it ended after a second";
    const auto absent = chooseSourceFor(2, 4, 2, {1}, take({{{4, -40}}, {{1, -40}}}), window);
    EXPECT_EQ(absent.track, 1);
    EXPECT_EQ(absent.kind, lav);
}

TEST(BlockSource, TheTakeIsCutMergedAndSmoothed) {
    const std::vector<ChannelClassification> roles{
        classified(1, ChannelKind::mix), classified(2, ChannelKind::unknown),
        classified(3, ChannelKind::boom), classified(4, ChannelKind::lav)};
    const auto check = [&](const char* name, const std::vector<Pattern>& tracks, double blockSeconds,
                           const char* blocks) {
        EXPECT_EQ(listed(buildBlocksFromDefault(1, take(tracks), window, roles, blockSeconds)), blocks)
            << name;
    };
    check("one source", {{{9.25, -30}}}, 2, "0-9.25 T1 mix");
    check("blocks last a second at least", {{{1, -30}, {1, -70}}}, 0.25, "0-1 T1 mix | 1-2 T1 silence");
    check("boom never stands in", {{{4, -80}}, {{4, -90}}, {{4, -20}}}, 2, "0-4 T1 silence");
    check("a lav goes before an equal track of unknown role",
          {{{4, -80}}, {{4, -30}}, {{4, -90}}, {{4, -30}}}, 2, "0-4 T4 lav");
    check("a track of unknown role stands in", {{{4, -80}}, {{4, -30}}}, 2, "0-4 T2 lav");
    check("a short silence between two blocks of one lav", {{{6, -80}}, {{2, -30}, {2, -80}, {2, -30}}}, 2,
          "0-6 T2 lav");
    check("a long one stays", {{{8, -80}}, {{2, -30}, {4, -80}, {2, -30}}}, 2,
          "0-2 T2 lav | 2-6 T1 silence | 6-8 T2 lav");
}

TEST(BlockSmoothing, MergingKeepsTheEarlierReasonAndTheHigherPeak) {
    BlockDecision first = block(0, 2, 1, lav, "first", -30), second = block(2, 3, 1, lav, "second", -10);
    first.secondaryTrack = 2;
    first.gainMultiplier = 2;
    const auto result = merged({first, second, block(3, 4, 1, mix), block(4, 5, 2, mix)});
    ASSERT_EQ(listed(result), "0-3 T1 lav | 3-4 T1 mix | 4-5 T2 mix");
    EXPECT_EQ(result[0].reason, "first");
    EXPECT_EQ(result[0].peakDB, -10);
    EXPECT_EQ(result[0].gainMultiplier, 2);
    EXPECT_TRUE(merged({}).empty());
}

TEST(BlockSmoothing, ShortSilenceGoesToTheNeighbourThatMayTakeIt) {
    const auto quiet = [](double start, double end) { return block(start, end, 1, silence, "s", -70); };
    const auto check = [&](const char* name, const std::vector<BlockDecision>& blocks, const char* expected) {
        EXPECT_EQ(listed(smoothed(blocks)), expected) << name;
    };
    check("nothing", {}, "");
    check("between two of one track, however short", {block(0, 1, 2, lav), quiet(1, 3), block(3, 4, 2, lav)},
          "0-4 T2 lav");
    check("longer than 2 s", {block(0, 9, 2, lav), quiet(9, 11.25), block(11.25, 20, 2, lav)},
          "0-9 T2 lav | 9-11.25 T1 silence | 11.25-20 T2 lav");
    check("the longer before", {block(0, 3, 2, lav), quiet(3, 4), block(4, 6, 3, lav)},
          "0-4 T2 lav | 4-6 T3 lav");
    check("the longer after", {block(0, 2, 2, lav), quiet(2, 3), block(3, 6, 3, lav)},
          "0-2 T2 lav | 2-6 T3 lav");
    check("equally long: before", {block(0, 2, 2, lav), quiet(2, 3), block(3, 5, 3, lav)},
          "0-3 T2 lav | 3-5 T3 lav");
    check("both below 2 s", {block(0, 1, 2, lav), quiet(1, 2), block(2, 3.5, 3, lav)},
          "0-1 T2 lav | 1-2 T1 silence | 2-3.5 T3 lav");
    check("at the start, the next too short", {quiet(0, 1), block(1, 2.5, 2, lav)},
          "0-1 T1 silence | 1-2.5 T2 lav");
    check("at the start, the next long enough", {quiet(0, 1), block(1, 3, 2, lav)}, "0-3 T2 lav");
    check("at the end", {block(0, 2, 2, lav), quiet(2, 3)}, "0-3 T2 lav");
    check("alone", {quiet(0, 1)}, "0-1 T1 silence");
    check("beside its own track", {block(0, 4, 1, mix), quiet(4, 5), block(5, 6, 2, lav)},
          "0-4 T1 mix | 4-5 T1 silence | 5-6 T2 lav");
    check("only silence is smoothed", {block(0, 4, 2, lav), block(4, 5, 1, mix), block(5, 9, 2, lav)},
          "0-4 T2 lav | 4-5 T1 mix | 5-9 T2 lav");
    check("a neighbour that grew takes more",
          {block(0, 1, 2, lav), quiet(1, 2), block(2, 3, 2, lav), quiet(3, 4), block(4, 5, 3, lav)},
          "0-4 T2 lav | 4-5 T3 lav");
    BlockDecision taken = quiet(0, 1.5);
    taken.gainMultiplier = 3;
    taken.secondaryTrack = 9;
    const BlockDecision result = smoothed({taken, block(1.5, 4, 2, lav, "kept", -80)}).front();
    EXPECT_EQ(result.reason, "smoothed: short silence absorbed into T2 (1.5s)");
    EXPECT_EQ(result.gainMultiplier, 1);
    EXPECT_EQ(result.secondaryTrack, std::nullopt);
    EXPECT_EQ(result.peakDB, -70);
}

TEST(BlockSmoothing, BoundariesSnapToTheNearestSilentWindow) {
    const auto stems = [](std::vector<float> rms) {
        StemMetrics metrics;
        metrics.dialogPerWindowRMS = std::move(rms);
        return metrics;
    };
    // `pattern`: of the only track; the boundary is at 2 s, window 8
    const auto check = [&](const char* name, const Pattern& pattern,
                           const std::optional<StemMetrics>& stemMetrics, const char* boundary) {
        const auto frames = take({pattern});
        const auto result = snapBoundariesToSilence({block(0, 2, 1, mix), block(2, 4, 2, lav)}, frames,
                                                    window, 0.5, stemMetrics);
        EXPECT_EQ(listed(result), std::string("0-") + boundary + " T1 mix | " + boundary + "-4 T2 lav")
            << name;
    };
    check("no silence", {{4, -20}}, {}, "2");
    check("no silence within half a second", {{1.25, silent}, {1.5, -20}, {1.25, silent}}, {}, "2");
    check("half a second before", {{1.5, -20}, {0.25, silent}, {2.25, -20}}, {}, "1.5");
    check("half a second after", {{2.5, -20}, {1.5, silent}}, {}, "2.5");
    check("the boundary itself", {{1, -20}, {3, silent}}, {}, "2");
    check("the nearer", {{1.5, -20}, {0.25, silent}, {0.5, -20}, {1.75, silent}}, {}, "2.25");
    check("the earlier of two as near", {{1.75, -20}, {0.25, silent}, {0.25, -20}, {1.75, silent}}, {},
          "1.75");
    check("the stem decides where it has an entry", {{4, -20}}, stems({1, 1, 1, 1, 1, 1, 1, 0.005F}), "1.75");
    check("-45 dBFS of dialogue is not silence", {{4, -20}}, stems(std::vector<float>(16, 0.0057F)), "2");
    check("behind the stem the tracks do", {{2.25, -20}, {1.75, silent}}, stems({1, 1}), "2.25");
    const auto frames = take({{{4, silent}}});
    EXPECT_EQ(listed(snapBoundariesToSilence({block(0, 3.9, 1, mix)}, frames, window, 0.5, {})),
              "0-3.9 T1 mix");
    const auto last = take({{{3.75, -20}, {0.25, silent}}});
    EXPECT_EQ(
        listed(snapBoundariesToSilence({block(0, 4, 1, mix), block(4, 4, 2, lav)}, last, window, 0.5, {})),
        "0-3.75 T1 mix | 3.75-4 T2 lav")
        << "there is no window at the end of the take";
}

TEST(BlockGain, LiftsToTheTargetAndCutsToTheCeiling) {
    SmartAudioBlockSettings small;
    small.maxBoostDB = 3;
    small.maxCutDB = 1;
    SmartAudioBlockSettings off;
    off.loudnessTargetDB = 0;
    const struct {
        double peakDB;
        SmartAudioBlockSettings settings;
        double gainDB;
    } cases[] = {{-20, {}, 12},  {-30, {}, 12},   {-120, {}, 12},   {-10, {}, 2}, {-8, {}, 0},
                 {-5, {}, 0},    {-1, {}, 0},     {-0.5, {}, -0.5}, {8, {}, -9},  {8, small, -9},
                 {-9, small, 1}, {-20, small, 3}, {-20, off, 0},    {3, off, 0}};
    for (const auto& c : cases)
        EXPECT_DOUBLE_EQ(blockGainDB(c.peakDB, c.settings), c.gainDB) << c.peakDB << " dB";
}

TEST(BlockGain, MeasuresTheTrackOrTheDialogueStem) {
    const auto frames = take({{{2, -40}, {2, -30}, {4, silent}}, {{8, -20}}});
    StemMetrics stems;
    stems.dialogPerWindowPeak = {0.5F, 1, 0.25F, 0.25F, 0.1F}; // 1.25 s
    const std::vector<BlockDecision> blocks{
        block(0, 2, 1, mix), block(2, 4, 1, lav), block(4, 6, 1, silence), block(6, 8, 1, boom),
        block(8, 9, 1, mix), block(0, 2, 0, mix), block(1, 1, 1, mix)};
    const auto check = [&](const char* name, const std::optional<StemMetrics>& stemMetrics,
                           const SmartAudioBlockSettings& settings, const std::vector<double>& peaksDB,
                           const std::vector<double>& gainsDB) {
        auto result = blocks;
        applyBlockGain(result, frames, window, settings, stemMetrics);
        for (std::size_t i = 0; i < result.size(); ++i) {
            EXPECT_NEAR(result[i].peakDB, peaksDB[i], nearly) << name << " " << i;
            EXPECT_NEAR(20 * std::log10(result[i].gainMultiplier), gainsDB[i], 1e-9) << name << " " << i;
        }
    };
    check("track", {}, {}, {-34, -24, -20, -120, -20, -20, -20}, {12, 12, 0, 12, 0, 0, 0});
    check("stem", stems, {}, {0, -120, -20, -120, -20, -20, -20}, {-1, 12, 0, 12, 0, 0, 0});
    check("measured even without gain", {}, {.loudnessTargetDB = 0}, {-34, -24, -20, -120, -20, -20, -20},
          {0, 0, 0, 0, 0, 0, 0});
}

TEST(ManualOverrides, RangesReplacePartsOfBlocks) {
    const std::vector<BlockDecision> blocks{block(0, 4, 1, mix), block(4, 8, 2, lav),
                                            block(8, 10, 0, silence)};
    const auto range = [](double start, double end, int track) {
        return BlockOverride{UUID(), start, end, track};
    };
    const double infinite = std::numeric_limits<double>::infinity();
    const auto check = [&](const char* name, const std::vector<BlockOverride>& overrides,
                           const char* expected) {
        EXPECT_EQ(listed(applyOverrides(blocks, overrides)), expected) << name;
    };
    check("none", {}, "0-4 T1 mix | 4-8 T2 lav | 8-10 T0 silence");
    check("a whole block", {range(4, 8, 3)}, "0-4 T1 mix | 4-8 T3 lav");
    check("the middle of one", {range(1, 2, 3)}, "0-1 T1 mix | 1-2 T3 lav | 2-4 T1 mix | 4-8 T2 lav");
    check("across a boundary", {range(3, 5, 3)}, "0-3 T1 mix | 3-5 T3 lav | 5-8 T2 lav");
    check("two in one block, given in any order", {range(3, 3.5, 4), range(1, 2, 3)},
          "0-1 T1 mix | 1-2 T3 lav | 2-3 T1 mix | 3-3.5 T4 lav | 3.5-4 T1 mix | 4-8 T2 lav");
    check("two that overlap", {range(1, 3, 3), range(2, 5, 4)},
          "0-1 T1 mix | 1-3 T3 lav | 2-5 T4 lav | 5-8 T2 lav");
    check("one within another", {range(1, 7, 3), range(2, 3, 4)},
          "0-1 T1 mix | 1-7 T3 lav | 2-3 T4 lav | 7-8 T2 lav");
    check("a part without a track before a range stays", {range(9, 10, 3)},
          "0-4 T1 mix | 4-8 T2 lav | 8-9 T0 silence | 9-10 T3 lav");
    check("behind the end", {range(20, 21, 3)}, "0-4 T1 mix | 4-8 T2 lav | 20-21 T3 lav");
    check("no times", {range(std::nan(""), 3, 3), range(1, infinite, 3)},
          "0-4 T1 mix | 4-8 T2 lav | 8-10 T0 silence");
    BlockDecision cut = block(0, 9, 1, multiActiveWarn, "why", -3);
    cut.secondaryTrack = 2;
    cut.gainMultiplier = 1.5;
    const auto pieces = applyOverrides({cut}, {range(2, 3, 5)});
    ASSERT_EQ(listed(pieces), "0-2 T1+2 multiActiveWarn | 2-3 T5 lav | 3-9 T1+2 multiActiveWarn");
    for (const std::size_t i : {0U, 2U}) {
        EXPECT_EQ(pieces[i].reason, "why");
        EXPECT_EQ(pieces[i].gainMultiplier, 1.5);
        EXPECT_EQ(pieces[i].peakDB, -3);
    }
    EXPECT_EQ(pieces[1].reason, "manual override → T5");
    EXPECT_EQ(pieces[1].peakDB, 0);
    EXPECT_EQ(pieces[1].gainMultiplier, 1);
    EXPECT_EQ(listed(applyOverrides({}, {range(1, 2, 1)})), "1-2 T1 lav");
}

} // namespace
} // namespace orvane::test
