#include "OrvaneSyncCore/Services/SmartAudio/ChannelClassifier.h"
#include "OrvaneSyncCore/Services/SmartAudio/Segmentation.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioBlockRouter.h"
#include "OrvaneSyncCore/Services/SmartAudio/SpeakerRouter.h"
#include "OrvaneSyncCore/SmartAudio/Routing/TakePatterns.h"
#include "SpokenTakes/MicrophoneScore.h"
#include "Support/RandomSeed.h"
#include "Support/TemporaryDirectory.h"

namespace orvane::test {
namespace {

using namespace SmartAudioBlockRouter;

/// The lowest cost, found by trying all ways to cut.
double leastCost(const SegmentCosts& costs, std::size_t shortest, std::size_t from, std::size_t before) {
    if (from == costs.windows()) return 0;
    double least = 1e9;
    for (std::size_t choice = 0; choice < costs.choices(); ++choice) {
        if (choice == before) continue;
        double sum = from > 0 ? costs.switchCost(from) : 0;
        for (std::size_t end = from + 1; end <= costs.windows(); ++end) {
            sum += costs.at(end - 1, choice);
            if (end - from >= shortest)
                least = std::min(least, sum + leastCost(costs, shortest, end, choice));
        }
    }
    return least;
}

TEST(Segmentation, findsTheCheapestSegmentsOfAtLeastTheLength) {
    for (const unsigned seed : seeds(60)) {
        std::mt19937 random(seed);
        const auto cost = [&](unsigned n) { return static_cast<double>(random() % n); };
        const std::size_t windows = 1 + random() % 9, choices = 1 + random() % 3, shortest = 1 + random() % 4;
        SegmentCosts costs(windows, choices);
        for (std::size_t window = 0; window < windows; ++window) {
            costs.setSwitchCost(window, cost(3));
            for (std::size_t choice = 0; choice < choices; ++choice) costs.at(window, choice) = cost(5);
        }
        const auto segments = cheapestSegments(costs, shortest);
        double sum = 0;
        std::size_t end = 0;
        for (const Segment& one : segments) {
            ASSERT_EQ(one.first, end) << seed;
            ASSERT_GE(one.end - one.first, std::min(shortest, windows)) << seed;
            if (end > 0) sum += costs.switchCost(end);
            for (; end < one.end; ++end) sum += costs.at(end, one.choice);
        }
        ASSERT_EQ(end, windows) << seed;
        ASSERT_EQ(sum, leastCost(costs, std::min(shortest, windows), 0, choices)) << seed;
    }
}

ChannelClassification lavOf(int track) { return classified(track, ChannelKind::lav, "iXML: Lav"); }

TEST(SpeakerRouter, FollowsTheSpeakerWhereNoBoomOrMixCarriesTheTake) {
    // Two people take turns on tracks 1 and 2; track 3 hears both.
    const std::vector<Pattern> people{{{6, -30}, {6, -45}}, {{6, -45}, {6, -30}}};
    auto withBoom = people, withSilentBoom = people;
    withBoom.push_back({{12, -35}});
    withSilentBoom.push_back({{12, -90}});
    const auto check = [&](const char* name, const std::vector<Pattern>& tracks,
                           std::vector<ChannelClassification> roles, SmartAudioRouting routing,
                           bool bySpeaker, const std::set<int>& candidates = {}) {
        SmartAudioBlockSettings settings;
        settings.routing = routing;
        const auto blocks =
            computeBlocks(take(tracks), window, std::move(roles), settings, {}, candidates).blocks;
        EXPECT_EQ(blocks.front().reason.starts_with("speaker: "), bySpeaker)
            << name << ": " << listed(blocks);
        if (bySpeaker) {
            EXPECT_EQ(listed(blocks), "0-6 T1 lav | 6-12 T2 lav") << name;
        }
    };
    using enum SmartAudioRouting;
    const auto boom = classified(3, ChannelKind::boom), mix = classified(3, ChannelKind::mix);
    auto isoMix = lavOf(3);
    isoMix.isPreMixed = true; // named "ISO MIX": a lav by its first word
    check("lavs alone", people, {lavOf(1), lavOf(2)}, automatic, true);
    check("names without a role", people, {classified(1, ChannelKind::unknown), lavOf(2)}, automatic, true);
    check("as it is asked for", people, {lavOf(1), lavOf(2)}, takeDefault, false);
    check("a boom", withBoom, {lavOf(1), lavOf(2), boom}, automatic, false);
    check("a mix", withBoom, {lavOf(1), lavOf(2), mix}, automatic, false);
    check("a mix by another name", withBoom, {lavOf(1), lavOf(2), isoMix}, automatic, false);
    check("a boom that hears nothing", withSilentBoom, {lavOf(1), lavOf(2), boom}, automatic, true);
    check("a boom that is left out", withBoom, {lavOf(1), lavOf(2), boom}, automatic, true, {1, 2});
    check("a boom, and lavs are asked for", withBoom, {lavOf(1), lavOf(2), boom}, speaker, true);
    check("one person", {people[0]}, {lavOf(1)}, speaker, false);
    const auto guessed = [](float secondWidth) {
        std::vector<ChannelStats> stats(3);
        for (int i = 0; i < 3; ++i)
            stats[static_cast<std::size_t>(i)] = {
                .trackIndex = i + 1, .averageRMS = 0.1F, .spectralWidth = 0.2F};
        stats[1].spectralWidth = secondWidth;
        return ChannelClassifier::classify(3, {}, stats);
    };
    auto third = people;
    third.push_back({{12, -70}});
    check("no names, and each a boom by its sound", third, guessed(0.2F), automatic, true);
    check("no names, and a boom by its sound that leads", third, guessed(0.1F), automatic, true);
    check("no names, and a boom by its sound that hears both", withBoom, guessed(0.1F), automatic, false);
}

TEST(SpeakerRouter, FollowsTheSpeakerAtAnyLevels) {
    const auto check = [&](const char* name, const std::vector<Pattern>& tracks, double minBlockSeconds,
                           const char* expected) {
        std::vector<int> numbers;
        for (std::size_t i = 0; i < tracks.size(); ++i) numbers.push_back(static_cast<int>(i) + 1);
        EXPECT_EQ(listed(buildBlocksBySpeaker(numbers, take(tracks), window, minBlockSeconds)), expected)
            << name;
    };
    check("the second lav is recorded 12 dB softer, with 6 dB of bleed",
          {{{2, -70}, {6, -20}, {6, -26}}, {{2, -70}, {6, -38}, {6, -32}}}, 2, "0-8 T1 lav | 8-14 T2 lav");
    check("one who speaks for a moment has a block of the least length",
          {{{1, -70}, {9, -30}, {1, -45}, {9, -30}}, {{1, -70}, {9, -45}, {1, -30}, {9, -45}}}, 4,
          "0-7 T1 lav | 7-11 T2 lav | 11-20 T1 lav");
    check("the cut lies in the pause, and a long pause is silence",
          {{{5, -30}, {1, -70}, {5, -45}, {30, -70}}, {{5, -45}, {1, -70}, {5, -30}, {30, -70}}}, 2,
          "0-5 T1 lav | 5-11 T2 lav | 11-41 T2 silence");
    check("a lav that hums", {{{2, -70}, {6, -30}, {6, -45}}, {{14, -20}}, {{2, -70}, {6, -45}, {6, -30}}}, 2,
          "0-8 T1 lav | 8-14 T3 lav");
    check("nobody speaks", {{{5, -70}}, {{5, -70}}}, 2, "");
}

/// Real speech on takes with lavs only: right as often as the rule that takes the loudest track, or more
/// often if there is much bleed. Only some cases; `microphone_check` tests all numbers of speakers, levels
/// and noises.
TEST(SpeakerRouter, OpensTheSpeakersLavOnSpokenTakes) {
    const TemporaryDirectory folder;
    const VoiceBank voices(folder.path());
    const auto check = [&](const char* name, double atLeast, double betterBy,
                           const std::function<void(TakePlan&)>& change, bool areNamed = true) {
        double ours = 0, loudest = 0;
        int takes = 0;
        for (const auto& [speakers, noise, speech] :
             {std::tuple(2, -62.0, -28.0), {3, -42.0, -28.0}, {4, -42.0, -20.0}}) {
            TakePlan plan{.seed = 77U + static_cast<unsigned>(speakers),
                          .speakers = speakers,
                          .noiseDB = noise,
                          .speechDB = speech,
                          .seconds = 45};
            change(plan);
            SpokenTake take = voices.take(plan);
            if (!areNamed) std::ranges::fill(take.names, "");
            const auto score = scoreOf(take, analysed(take, {}, folder.path()).blocks);
            EXPECT_EQ(score.heard, score.speakers) << name << ", " << speakers << " speakers";
            ours += score.share();
            loudest += scoreOf(take, loudestOfTwoSeconds(take)).share();
            ++takes;
        }
        EXPECT_GE(ours / takes, std::max(atLeast, loudest / takes + betterBy))
            << name << ", " << loudest / takes;
    };
    check("much bleed", 0.85, 0.03, [](TakePlan& plan) { plan.bleedDB = -6; });
    check("little bleed", 0.85, 0, [](TakePlan& plan) { plan.bleedDB = -20; });
    // Without names, tracks that sound wide are called booms, and the first of four tracks is called a mix.
    check(
        "much bleed, no names", 0.85, 0.03, [](TakePlan& plan) { plan.bleedDB = -6; }, false);
    check(
        "little bleed, no names", 0.85, 0, [](TakePlan& plan) { plan.bleedDB = -20; }, false);
    check("quick dialogue", 0.6, 0, [](TakePlan& plan) {
        plan.shortestTurn = 0.8;
        plan.longestTurn = 2;
        plan.longestPause = 0.4;
    });

    // A take with a boom gets the blocks of the take default, whether the boom is named or guessed.
    for (const int speakers : {3, 4})
        for (const bool areNamed : {true, false}) {
            TakePlan plan{.seed = 5, .speakers = speakers, .seconds = 20, .boomDB = -34};
            SpokenTake take = voices.take(plan);
            if (!areNamed) std::ranges::fill(take.names, "");
            EXPECT_EQ(analysed(take, {}, folder.path()).blocks,
                      analysed(take, {.routing = SmartAudioRouting::takeDefault}, folder.path()).blocks)
                << speakers << areNamed;
        }
}

} // namespace
} // namespace orvane::test
