#include "OrvaneSyncCore/Services/SmartAudio/RoutingDiagnostic.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioBlockRouter.h"
#include "OrvaneSyncCore/Services/SmartAudio/TakeStatistics.h"
#include "OrvaneSyncCore/SmartAudio/Routing/TakePatterns.h"
#include "Platform/Files.h"
#include "Support/RandomSeed.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

namespace orvane::test {
namespace {

using namespace SmartAudioBlockRouter;

const std::vector<ChannelClassification> boomAndLavs{classified(1, ChannelKind::boom, "iXML: Boom"),
                                                     classified(2, ChannelKind::lav, "iXML: Anna", "anna"),
                                                     classified(3, ChannelKind::lav, "iXML: Ben", "ben")};

TEST(SmartAudioBlockRouter, ATakeIsRoutedFromItsDefaultOrWindowByWindow) {
    const auto check = [&](const char* name, const std::vector<Pattern>& tracks, BlockMode mode,
                           const std::set<int>& candidates, const char* blocks, MaterialCharacter detected) {
        SmartAudioBlockSettings settings;
        settings.blockMode = mode;
        const Routing routing = computeBlocks(take(tracks), window, boomAndLavs, settings, {}, candidates);
        EXPECT_EQ(listed(routing.blocks), blocks) << name;
        EXPECT_EQ(routing.detected, detected) << name;
    };
    check("one track that speaks throughout", {{{10, -30}}}, BlockMode::adaptive, {}, "0-10 T1 mix",
          MaterialCharacter::interview);
    check("a lav speaks while the boom is silent, adaptive blocks of 2 s",
          {{{12, -30}, {4, -70}}, {{12, -70}, {4, -40}}}, BlockMode::adaptive, {},
          "0-12 T1 mix | 12-16 T2 lav", MaterialCharacter::interview);
    check("an excluded lav does not", {{{12, -30}, {4, -70}}, {{12, -70}, {4, -40}}}, BlockMode::adaptive,
          {1, 3}, "0-12 T1 mix | 12-16 T1 silence", MaterialCharacter::interview);
    check("fine blocks are too short for an override", {{{4, -30}}, {{2, -70}, {2, -15}}}, BlockMode::fine,
          {1, 2}, "0-4 T1 mix", MaterialCharacter::standardDialog);
    check("standard blocks are not, and the boundary finds no silence", {{{4, -30}}, {{2, -70}, {2, -15}}},
          BlockMode::standard, {1, 2}, "0-2 T1 mix | 2-4 T2 lav", MaterialCharacter::standardDialog);
    check("coarse blocks", {{{8, -30}, {4, -70}}, {{10, -80}, {2, -40}}}, BlockMode::coarse, {1, 2},
          "0-8 T1 mix | 8-12 T2 lav", MaterialCharacter::interview);
    check("the boundary moves to the pause before it",
          {{{7.5, -30}, {0.25, -70}, {0.25, -30}, {4, -70}}, {{8, -80}, {4, -40}}}, BlockMode::standard, {},
          "0-7.5 T1 mix | 7.5-12 T2 lav", MaterialCharacter::interview);
    check("hardly any speech: window by window", {{{10, -70}, {2, -30}, {8, -70}}, {{20, -80}}},
          BlockMode::adaptive, {}, "0-9.75 T1 silence | 9.75-12 T1 boom | 12-20 T1 silence",
          MaterialCharacter::actionAtmo);
    const Routing nothing = computeBlocks({}, window, boomAndLavs, {}, {}, {});
    EXPECT_TRUE(nothing.blocks.empty());
    EXPECT_EQ(nothing.detected, MaterialCharacter::standardDialog);
}

TEST(SmartAudioBlockRouter, BlocksComeWithTheirGain) {
    const auto blocks = computeBlocks(take({{{4, -16}, {4, -70}}}), window, boomAndLavs, {}, {}, {}).blocks;
    ASSERT_EQ(listed(blocks), "0-4 T1 mix | 4-8 T1 silence");
    EXPECT_NEAR(blocks[0].peakDB, -10, 1e-4);
    EXPECT_NEAR(20 * std::log10(blocks[0].gainMultiplier), 2, 1e-4);
    EXPECT_EQ(blocks[1].gainMultiplier, 1);
}

/// Takes with any levels, including broken measurements.
TEST(SmartAudioBlockRouter, WhateverTheLevelsBlocksCoverTheTakeAndEveryNumberIsFinite) {
    constexpr float broken[] = {0,
                                -1,
                                std::numeric_limits<float>::quiet_NaN(),
                                std::numeric_limits<float>::infinity(),
                                std::numeric_limits<float>::max(),
                                std::numeric_limits<float>::denorm_min()};
    for (const unsigned seed : test::seeds(60)) {
        std::mt19937 random(seed);
        const auto below = [&](unsigned n) { return static_cast<int>(random() % n); };
        std::vector<PerWindowFrame> frames(static_cast<std::size_t>(1 + below(300)));
        const int tracks = below(6);
        const bool hasBroken = seed % 2 == 0;
        for (std::size_t i = 0; i < frames.size(); ++i) {
            frames[i].index = static_cast<int>(i);
            for (int track = 1; track <= tracks; ++track) {
                if (below(20) == 0) continue;
                WindowMetrics m = metrics(track, -90.0 + below(90));
                if (hasBroken && below(10) == 0) m.rms = broken[below(std::size(broken))];
                if (hasBroken && below(10) == 0) m.peakAbs = broken[below(std::size(broken))];
                if (below(10) == 0) m.hasSpeech = !m.hasSpeech;
                frames[i].perChannel.push_back(m);
            }
        }
        std::vector<ChannelClassification> roles;
        for (int track = 1; track <= tracks + 1; ++track)
            roles.push_back(
                classified(track, static_cast<ChannelKind>(below(4)), below(4) == 0 ? "iso" : ""));
        SmartAudioBlockSettings settings;
        settings.blockMode = static_cast<BlockMode>(below(4));

        for (const auto& [track, s] : computeChannelStats(frames))
            for (const double value :
                 {s.noiseFloorDB, s.typicalCrestFactorDB, s.takeDominance, s.speechCoverage, s.rmsVarianceDB})
                ASSERT_TRUE(std::isfinite(value)) << "seed " << seed << " track " << track;
        const auto blocks = computeBlocks(frames, window, roles, settings, {}, {}).blocks;
        double end = 0;
        for (const BlockDecision& b : blocks) {
            ASSERT_EQ(b.startSeconds, end) << "seed " << seed << ": " << listed(blocks);
            ASSERT_LE(b.startSeconds, b.endSeconds) << "seed " << seed << ": " << listed(blocks);
            ASSERT_TRUE(std::isfinite(b.peakDB) && std::isfinite(b.gainMultiplier)) << "seed " << seed;
            end = b.endSeconds;
        }
        ASSERT_EQ(end, static_cast<double>(frames.size()) * window) << "seed " << seed;
        ASSERT_EQ(blocks, computeBlocks(frames, window, roles, settings, {}, {}).blocks);
    }
}

TEST(RoutingDiagnostic, AWindowRunReplacesTheReportAndBlocksAreAppended) {
    const TemporaryDirectory folder;
    const std::string file = folder.path(routingDiagnosticName);
    const auto sparse = take({{{10, -70}, {2, -30}, {8, -70}}, {{20, -80}}});
    const auto spoken = take({{{10, -30}}});

    computeBlocks(spoken, window, boomAndLavs, {}, {}, {}, file);
    EXPECT_FALSE(platform::files::exists(file)) << "nothing is appended to a file that is not there";

    folder.write(routingDiagnosticName, "an earlier run\n");
    auto roles = boomAndLavs;
    roles[1].source = "iXML: Anna\x1b[31m\n";
    computeBlocks(sparse, window, roles, {}, {}, {2, 1}, file);
    const std::string report = folder.read(routingDiagnosticName);
    const char* const parts[] = {
        "=== Smart-Audio routing diagnostic ===\nFrames: 80 · windowSec: see caller · candidates: [1, 2]\n",
        "CLASSIFICATIONS (kind / confidence / source):\n  T1 | boom | 0.95 | iXML: Boom\n  T2 | lav | 0.95 | "
        "iXML: Anna\xEF\xBF\xBD[31m\xEF\xBF\xBD\n",
        "CHANNEL STATS:\n  T# | noiseFloor | typCrest | takeDominance\n  T1 |  -65.0 dB |    6.0 dB | 1.00\n",
        "PER-WINDOW SCORES (every 50th window for brevity):\nWindow 0 (0.00s):\n  T1 [boom] rms  -70.0 dB · "
        "peak  "
        "-64.0 dB · crest    6.0 dB · snr   -5.0 dB · hasSpeech=false\n",
        "  → T1 [silence]  reason: no speech above floor — keeping fallback track\nWindow 50 (12.50s):\n",
        "=== FINAL CONSOLIDATED BLOCKS (= what the strip shows) ===\nTake-default: NONE — fell through to "
        "per-window scoring\nTrack distribution by duration:\n  T1:  20.0s (100.0%)  iXML: Boom\n",
        "Block list (start → end · track · kind · reason):\n    0.00 →   9.75 s · T1 [silence] · no speech",
    };
    std::size_t at = 0;
    for (const char* part : parts) {
        const std::size_t found = report.find(part, at);
        ASSERT_NE(found, std::string::npos) << part << "\nin\n" << report;
        at = found;
    }
    EXPECT_EQ(report.find("Window 49"), std::string::npos);

    computeBlocks(spoken, window, boomAndLavs, {}, {}, {}, file);
    const std::string longer = folder.read(routingDiagnosticName);
    ASSERT_TRUE(longer.starts_with(report));
    EXPECT_NE(longer.find("Take-default: T1 (iXML: Boom)\n", report.size()), std::string::npos);

    // A report of more than 2 MB keeps only the newest runs, or the newest lines of a single run.
    const std::string section = "\n=== FINAL CONSOLIDATED BLOCKS (= what the strip shows) ===\n";
    const std::string old(3 << 20U, 'x'), kept = "kept\n" + std::string(1 << 20U, 'y') + "\n";
    for (const auto& [heading, first] :
         {std::pair{section, section.substr(1)}, std::pair{std::string("z\n"), std::string()}}) {
        folder.write(routingDiagnosticName, section + old + heading + kept);
        appendToReport(file, "newest");
        EXPECT_EQ(folder.read(routingDiagnosticName).substr(0, 80), (first + kept).substr(0, 80));
        EXPECT_TRUE(folder.read(routingDiagnosticName).ends_with("y\nnewest"));
    }

    const auto lost = computeBlocks(sparse, window, boomAndLavs, {}, {}, {}, folder.path("missing/folder"));
    EXPECT_EQ(lost.blocks.size(), 3U) << "a report that cannot be written costs nothing";
}

} // namespace
} // namespace orvane::test
