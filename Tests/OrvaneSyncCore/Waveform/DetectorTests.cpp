#include "OrvaneSyncCore/Services/Waveform/ClapDetector.h"
#include "OrvaneSyncCore/Services/Waveform/OnsetDetector.h"
#include "Support/MemoryAudio.h"
#include "Support/Test.h"

#include <cmath>
#include <functional>
#include <optional>
#include <vector>

namespace orvane {
namespace {

using Levels = std::vector<float>;
using Times = std::vector<double>;

Levels levels(std::size_t bins, float floor, std::initializer_list<std::pair<std::size_t, float>> louder) {
    Levels made(bins, floor);
    for (const auto& [bin, level] : louder) made[bin] = level;
    return made;
}

TEST(OnsetDetector, findsWhereSoundStarts) {
    struct Case {
        const char* name;
        Levels rms;
        double binsPerSecond, gap;
        Times onsets;
    };
    const Case cases[] = {
        {"two starts", levels(20, 0, {{5, 0.5F}, {6, 0.5F}, {12, 0.5F}}), 10, 0.3, {0.5, 1.2}},
        {"too few bins", Levels{0, 0, 1, 1}, 10, 0.3, {}},
        {"loud from the first bin", levels(20, 0, {{0, 1}, {1, 1}, {9, 1}}), 10, 0.3, {0.1, 0.9}},
        {"a quick second rise, which does not restart the gap",
         levels(20, 0, {{5, 1}, {7, 1}, {9, 1}, {10, 1}}),
         10,
         0.4,
         {0.5, 0.9}},
        {"2.5 times the floor is not above it", levels(10, 0.1F, {{5, 0.25F}}), 10, 0.3, {}},
        {"just above", levels(10, 0.1F, {{5, 0.26F}}), 10, 0.3, {0.5}},
        {"noise that is never loud", levels(10, 0.001F, {{5, 0.02F}}), 10, 0.3, {}},
        {"no rate", levels(10, 0, {{5, 1}}), 0, 0.3, {}},
        {"a gap of years", levels(10, 0, {{5, 1}}), 10, 1e300, {0.5}},
    };
    for (const Case& one : cases)
        EXPECT_EQ(OnsetDetector::detect(one.rms, one.binsPerSecond, one.gap, 2.5F), one.onsets) << one.name;
}

TEST(OnsetDetector, snapsAndJumps) {
    const Times onsets{1, 2, 4};
    for (const auto& [time, snapped] : std::vector<std::pair<double, double>>{
             {1.2, 1}, {1.25, 1.25}, {1.5, 1.5}, {3.9, 4}, {9, 9}, {0.8, 1}})
        EXPECT_EQ(OnsetDetector::snap(time, onsets, 0.25), snapped) << time;
    EXPECT_EQ(OnsetDetector::snap(1.5, onsets, 1), 1); // the first of equals
    EXPECT_EQ(OnsetDetector::snap(1, Times{}, 1), 1);
    constexpr double gap = 0.25;
    EXPECT_EQ(OnsetDetector::nearestOnsetBefore(2.25, onsets, gap), 1); // strictly before
    EXPECT_EQ(OnsetDetector::nearestOnsetBefore(2.26, onsets, gap), 2);
    EXPECT_EQ(OnsetDetector::nearestOnsetBefore(1, onsets, gap), std::nullopt);
    EXPECT_EQ(OnsetDetector::nearestOnsetAfter(1.75, onsets, gap), 4);
    EXPECT_EQ(OnsetDetector::nearestOnsetAfter(1.7, onsets, gap), 2);
    EXPECT_EQ(OnsetDetector::nearestOnsetAfter(4, onsets, gap), std::nullopt);
}

TEST(ClapDetector, findsALoudPeakBeforeOrBehindAQuietEnd) {
    constexpr double rate = 1000; // a block has 10 samples
    struct Case {
        const char* name;
        double seconds;
        float noise;
        std::vector<std::pair<double, float>> peaks; ///< seconds, level
        std::optional<double> clap;
    };
    const Case cases[] = {
        {"in the head", 60, 0.01F, {{3.204, 0.9F}}, 3.2},
        {"of equals the first", 60, 0, {{3, 0.5F}, {4, 0.5F}}, 3.0},
        {"the negative one is higher", 60, 0, {{3, 0.5F}, {4, -0.6F}}, 4.0},
        {"in the tail alone", 90, 0.01F, {{80.019, 0.9F}}, 80.01},
        {"in the middle nobody looks", 90, 0.01F, {{45, 0.9F}}, std::nullopt},
        {"five times the noise is none", 60, 0.125F, {{3, 0.625F}}, std::nullopt},
        {"more than five times is one", 60, 0.125F, {{3, 0.626F}}, 3.0},
        {"silence", 60, 0, {}, std::nullopt},
        {"a short file", 2, 0.01F, {{1, 0.9F}}, 1.0},
        {"the block that the end cuts off", 0.015, 0, {{0.012, 0.9F}}, std::nullopt},
    };
    for (const Case& one : cases) {
        std::vector<float> left(static_cast<std::size_t>(one.seconds * rate), one.noise);
        std::vector<float> right(left.size(), -one.noise);
        for (const auto& [at, level] : one.peaks)
            right[static_cast<std::size_t>(std::lround(at * rate))] = level;
        test::MemoryAudio file({left, right}, rate);
        EXPECT_EQ(ClapDetector::detectClapPoint(file), one.clap) << one.name;
    }
    // The file is shorter than it states: the quiet end is that of the part that can be read.
    std::vector<float> sound(10'000, 0.01F);
    sound[2000] = 0.9F;
    test::MemoryAudio cut({sound}, rate, 100'000);
    EXPECT_EQ(ClapDetector::detectClapPoint(cut), 2);
    test::MemoryAudio noRate({sound}, 0);
    EXPECT_EQ(ClapDetector::detectClapPoint(noRate), std::nullopt);
    EXPECT_EQ(ClapDetector::detectClapPoint(FileURL{"/nowhere.wav"}), std::nullopt);
}

} // namespace
} // namespace orvane
