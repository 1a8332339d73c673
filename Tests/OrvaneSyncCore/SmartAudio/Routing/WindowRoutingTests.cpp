#include "OrvaneSyncCore/Services/SmartAudio/WindowRouting.h"
#include "OrvaneSyncCore/SmartAudio/Routing/TakePatterns.h"

#include <gtest/gtest.h>

namespace orvane::test {
namespace {

using namespace SmartAudioBlockRouter;

struct Channel {
    ChannelKind kind;
    double rmsDB;
    const char* speaker = "";
    double floorDB = -55;
};

PerWindowOutcome decide(const std::vector<Channel>& channels, const std::set<int>& candidates = {}) {
    PerWindowFrame frame;
    std::vector<ChannelClassification> roles;
    TakeStatistics stats;
    for (const Channel& channel : channels) {
        const int track = static_cast<int>(roles.size()) + 1;
        frame.perChannel.push_back(metrics(track, channel.rmsDB));
        roles.push_back(classified(track, channel.kind, "", channel.speaker));
        stats[track] = {track, channel.floorDB, 6, 0, 0, 0};
    }
    return decideOneWindow(frame, TrackRoles::of(roles), stats, candidates);
}

TEST(WindowRouting, OneWindowIsDecidedByItsScores) {
    using enum ChannelKind;
    const char* const nobody = "no speech above floor — keeping fallback track";
    const char* const risk = "multi-speaker, no Mix — phase risk";
    const struct {
        const char* name;
        std::vector<Channel> channels;
        std::set<int> candidates;
        PerWindowOutcome expected;
    } cases[] = {
        {"no channels", {}, {}, {0, {}, BlockKind::silence, nobody}},
        {"silence falls back on the boom",
         {{mix, -60}, {lav, -70}, {boom, -80}},
         {},
         {3, {}, BlockKind::silence, nobody}},
        {"else on the mix", {{lav, -70}, {mix, -80}}, {}, {2, {}, BlockKind::silence, nobody}},
        {"else on the loudest, the first on a tie",
         {{lav, -70}, {unknown, -60}, {lav, -60}},
         {},
         {2, {}, BlockKind::silence, nobody}},
        {"speech below the floor of -45 dB",
         {{lav, -45.1}, {boom, -49}},
         {},
         {2, {}, BlockKind::silence, nobody}},
        {"only tracks outside the candidates speak",
         {{lav, -20}, {lav, -70}},
         {2},
         {2, {}, BlockKind::silence, nobody}},
        {"20 dB above its noise a track scores its level",
         {{boom, -35}},
         {},
         {1, {}, BlockKind::boom, "score -35.0 [rms -35.0 · snr +20.0 · clean +0.0]"}},
        {"the bonus ends at 45 dB above",
         {{lav, -12, "", -65}},
         {},
         {1, {}, BlockKind::lav, "score -2.0 [rms -12.0 · snr +53.0 · clean +0.0]"}},
        {"and at 5 dB below",
         {{unknown, -40, "", -25}},
         {},
         {1, {}, BlockKind::lav, "score -50.0 [rms -40.0 · snr +-15.0 · clean +0.0]"}},
        {"a clean boom beats a louder noisy lav",
         {{boom, -30, "", -60}, {lav, -26, "", -40}},
         {},
         {1, {}, BlockKind::boom, "score -26.0 [rms -30.0 · snr +30.0 · clean +0.0]"}},
        {"the first of equal scores",
         {{mix, -30}, {boom, -30}},
         {},
         {1, {}, BlockKind::mix, "score -28.0 [rms -30.0 · snr +25.0 · clean +0.0]"}},
        {"one person on two lavs",
         {{lav, -29, "anna"}, {lav, -25, "anna"}, {mix, -20}},
         {},
         {2, {}, BlockKind::lav, "two lavs (anna) — bleed Δ4.0 dB"}},
        {"two people and a mix",
         {{lav, -25, "anna"}, {lav, -29, "ben"}, {mix, -40}},
         {},
         {3, {}, BlockKind::mix, "multi-speaker (anna + ben) → Mix"}},
        {"two of whom one has no name",
         {{lav, -25, "anna"}, {lav, -29}, {mix, -40}},
         {},
         {3, {}, BlockKind::mix, "multi-speaker (RMS-similar lavs Δ4.0 dB) → Mix"}},
        {"two without names are two people",
         {{lav, -25}, {lav, -25}},
         {},
         {1, 2, BlockKind::multiActiveWarn, risk}},
        {"a mix below the floor is no mix",
         {{lav, -25, "a"}, {lav, -29, "b"}, {mix, -46}},
         {},
         {1, 2, BlockKind::multiActiveWarn, risk}},
        {"a mix that is no candidate neither",
         {{lav, -25, "a"}, {lav, -29, "b"}, {mix, -30}},
         {1, 2},
         {1, 2, BlockKind::multiActiveWarn, risk}},
        {"a boom does not take over from two people",
         {{boom, -20}, {lav, -25, "a"}, {lav, -29, "b"}},
         {},
         {2, 3, BlockKind::multiActiveWarn, risk}},
        {"5.9 dB apart is similar", {{lav, -25}, {lav, -30.9}}, {}, {1, 2, BlockKind::multiActiveWarn, risk}},
        {"6.1 dB is not",
         {{lav, -25}, {lav, -31.1}},
         {},
         {1, {}, BlockKind::lav, "score -21.0 [rms -25.0 · snr +30.0 · clean +0.0]"}},
        {"only the two loudest lavs are compared",
         {{lav, -40, "a"}, {lav, -20, "b"}, {lav, -39, "a"}},
         {},
         {2, {}, BlockKind::lav, "score -14.0 [rms -20.0 · snr +35.0 · clean +0.0]"}},
        {"tracks of unknown role are no pair of lavs",
         {{lav, -25}, {unknown, -25}},
         {},
         {1, {}, BlockKind::lav, "score -21.0 [rms -25.0 · snr +30.0 · clean +0.0]"}},
    };
    for (const auto& c : cases) {
        const PerWindowOutcome outcome = decide(c.channels, c.candidates);
        EXPECT_EQ(outcome.activeTrack, c.expected.activeTrack) << c.name;
        EXPECT_EQ(outcome.secondaryTrack, c.expected.secondaryTrack) << c.name;
        EXPECT_EQ(outcome.kind, c.expected.kind) << c.name;
        EXPECT_EQ(outcome.reason, c.expected.reason) << c.name;
    }
    PerWindowFrame frame{0, {metrics(7, -30)}};
    EXPECT_EQ(decideOneWindow(frame, {}, {}, {}).reason, "score -38.0 [rms -30.0 · snr +0.0 · clean +0.0]")
        << "without statistics";
    frame.perChannel[0].hasSpeech = false;
    EXPECT_EQ(decideOneWindow(frame, {}, {}, {}).reason, nobody) << "loud, but not speech";
}

TEST(WindowRouting, RunsOfEqualOutcomesBecomeBlocks) {
    // A letter a window: other letters are other outcomes, capitals differ from small ones by the reason
    // only.
    const auto decisions = [](const std::string& letters) {
        std::vector<WindowDecision> list;
        for (const char letter : letters) {
            const int track = std::tolower(letter) - 'a' + 1;
            list.push_back({static_cast<int>(list.size()), {track, {}, BlockKind::lav, {letter}}});
        }
        return list;
    };
    const struct {
        const char* windows;
        double minBlockSeconds;
        const char* blocks;
    } cases[] = {
        {"", 1, ""},
        {"a", 1, "0-0.25 T1 lav"},
        {"aaaabbbb", 1, "0-1 T1 lav | 1-2 T2 lav"},
        {"aaaabbb", 1, "0-1.75 T1 lav"},
        {"abbbb", 1, "0-0.25 T1 lav | 0.25-1.25 T2 lav"},
        {"abcdefgh", 0.5, "0-2 T1 lav"},
        {"aaaabbaaaa", 1, "0-1.5 T1 lav | 1.5-2.5 T1 lav"},
        {"aaaaAAAA", 1, "0-1 T1 lav | 1-2 T1 lav"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(listed(consolidateRuns(decisions(c.windows), window, c.minBlockSeconds)), c.blocks)
            << c.windows;

    const auto blocks = consolidateRuns({{0, {1, 2, BlockKind::multiActiveWarn, "why"}}}, window, 1);
    EXPECT_EQ(listed(blocks), "0-0.25 T1+2 multiActiveWarn");
    EXPECT_EQ(blocks[0].reason, "why");
    EXPECT_EQ(blocks[0].peakDB, 0);
    EXPECT_EQ(blocks[0].gainMultiplier, 1);
}

} // namespace
} // namespace orvane::test
