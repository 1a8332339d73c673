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

/// The outcome as text, such as "T1+2 multiActiveWarn, risk".
std::string text(const PerWindowOutcome& outcome) {
    std::string reason = outcome.reason;
    if (reason == "no speech above floor — keeping fallback track") reason = "nobody";
    if (reason == "multi-speaker, no Mix — phase risk") reason = "risk";
    return listed({{0, 1, outcome.activeTrack, outcome.secondaryTrack, outcome.kind, 1, 0, ""}}).substr(4) +
           ", " + reason;
}

TEST(WindowRouting, OneWindowIsDecidedByItsScores) {
    using enum ChannelKind;
    const auto check = [&](const char* name, const std::vector<Channel>& channels,
                           const std::set<int>& candidates, const char* outcome) {
        EXPECT_EQ(text(decide(channels, candidates)), outcome) << name;
    };
    check("no channels", {}, {}, "T0 silence, nobody");
    check("silence falls back on the boom", {{mix, -60}, {lav, -70}, {boom, -80}}, {}, "T3 silence, nobody");
    check("else on the mix", {{lav, -70}, {mix, -80}}, {}, "T2 silence, nobody");
    check("else on the loudest, the first of equals", {{lav, -70}, {unknown, -60}, {lav, -60}}, {},
          "T2 silence, nobody");
    check("speech below the floor of -45 dB", {{lav, -45.00001}, {boom, -49}}, {}, "T2 silence, nobody");
    check("speech just above it", {{lav, -44.99999}, {boom, -49}}, {},
          "T1 lav, score -49.0 [rms -45.0 · snr +10.0 · clean +0.0]");
    check("only tracks outside the candidates speak", {{lav, -20}, {lav, -70}}, {2}, "T2 silence, nobody");
    check("20 dB above its noise a track scores its level", {{boom, -35}}, {},
          "T1 boom, score -35.0 [rms -35.0 · snr +20.0 · clean +0.0]");
    check("the bonus ends at 45 dB above", {{lav, -12, "", -65}}, {},
          "T1 lav, score -2.0 [rms -12.0 · snr +53.0 · clean +0.0]");
    check("and at 5 dB below", {{unknown, -40, "", -25}}, {},
          "T1 lav, score -50.0 [rms -40.0 · snr +-15.0 · clean +0.0]");
    check("a clean boom beats a louder noisy lav", {{boom, -30, "", -60}, {lav, -26, "", -40}}, {},
          "T1 boom, score -26.0 [rms -30.0 · snr +30.0 · clean +0.0]");
    check("the first of equal scores", {{mix, -30}, {boom, -30}}, {},
          "T1 mix, score -28.0 [rms -30.0 · snr +25.0 · clean +0.0]");
    check("one person on two lavs", {{lav, -29, "anna"}, {lav, -25, "anna"}, {mix, -20}}, {},
          "T2 lav, two lavs (anna) — bleed Δ4.0 dB");
    check("two people and a mix", {{lav, -25, "anna"}, {lav, -29, "ben"}, {mix, -40}}, {},
          "T3 mix, multi-speaker (anna + ben) → Mix");
    check("two, one has no name", {{lav, -25, "anna"}, {lav, -29}, {mix, -40}}, {},
          "T3 mix, multi-speaker (RMS-similar lavs Δ4.0 dB) → Mix");
    check("two without names are two people", {{lav, -25}, {lav, -25}}, {}, "T1+2 multiActiveWarn, risk");
    check("a mix below the floor is no mix", {{lav, -25, "a"}, {lav, -29, "b"}, {mix, -46}}, {},
          "T1+2 multiActiveWarn, risk");
    check("nor is one that is no candidate", {{lav, -25, "a"}, {lav, -29, "b"}, {mix, -30}}, {1, 2},
          "T1+2 multiActiveWarn, risk");
    check("a boom does not take over from two", {{boom, -20}, {lav, -25, "a"}, {lav, -29, "b"}}, {},
          "T2+3 multiActiveWarn, risk");
    check("6 dB apart is similar", {{lav, -25}, {lav, -30.99999}}, {}, "T1+2 multiActiveWarn, risk");
    check("more is not", {{lav, -25}, {lav, -31.00001}}, {},
          "T1 lav, score -21.0 [rms -25.0 · snr +30.0 · clean +0.0]");
    check("only the two loudest lavs are compared", {{lav, -40, "a"}, {lav, -20, "b"}, {lav, -39, "a"}}, {},
          "T2 lav, score -14.0 [rms -20.0 · snr +35.0 · clean +0.0]");
    check("a track of unknown role makes no pair", {{lav, -25}, {unknown, -25}}, {},
          "T1 lav, score -21.0 [rms -25.0 · snr +30.0 · clean +0.0]");
    PerWindowFrame frame{0, {metrics(7, -30)}};
    EXPECT_EQ(text(decideOneWindow(frame, {}, {}, {})),
              "T7 lav, score -38.0 [rms -30.0 · snr +0.0 · clean +0.0]")
        << "without statistics";
    frame.perChannel[0].hasSpeech = false;
    EXPECT_EQ(text(decideOneWindow(frame, {}, {}, {})), "T7 silence, nobody") << "loud, but not speech";
}

TEST(WindowRouting, RunsOfEqualOutcomesBecomeBlocks) {
    // One letter per window: different letters are different outcomes; a capital differs from its small
    // letter only by the reason.
    const auto decisions = [](const std::string& letters) {
        std::vector<WindowDecision> list;
        for (const char letter : letters) {
            const int track = std::tolower(letter) - 'a' + 1;
            list.push_back({static_cast<int>(list.size()), {track, {}, BlockKind::lav, {letter}}});
        }
        return list;
    };
    const auto check = [&](const char* windows, double minBlockSeconds, const char* blocks) {
        EXPECT_EQ(listed(consolidateRuns(decisions(windows), window, minBlockSeconds)), blocks) << windows;
    };
    check("", 1, "");
    check("a", 1, "0-0.25 T1 lav");
    check("aaaabbbb", 1, "0-1 T1 lav | 1-2 T2 lav");
    check("aaaabbb", 1, "0-1.75 T1 lav");
    check("abbbb", 1, "0-0.25 T1 lav | 0.25-1.25 T2 lav");
    check("abcdefgh", 0.5, "0-2 T1 lav");
    check("aaaabbaaaa", 1, "0-1.5 T1 lav | 1.5-2.5 T1 lav");
    check("aaaaAAAA", 1, "0-1 T1 lav | 1-2 T1 lav");
    const auto blocks = consolidateRuns({{0, {1, 2, BlockKind::multiActiveWarn, "why"}}}, window, 1);
    EXPECT_EQ(listed(blocks), "0-0.25 T1+2 multiActiveWarn");
    EXPECT_EQ(blocks[0].reason, "why");
    EXPECT_EQ(blocks[0].peakDB, 0);
    EXPECT_EQ(blocks[0].gainMultiplier, 1);
}

} // namespace
} // namespace orvane::test
