#include "OrvaneSyncCore/Services/RenderedAudio/VoiceIsolationChain.h"

#include "Support/RandomSeed.h"
#include "Support/Test.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <random>
#include <vector>

namespace orvane {
namespace {

constexpr double sampleRate = 48000;

double decibels(double linear) { return 20 * std::log10(linear); }

/// The response of a filter at a frequency, from its impulse response.
double responseDB(Biquad filter, double frequency) {
    std::complex<double> sum = 0;
    for (int i = 0; i < 200'000; ++i)
        sum += filter(i == 0 ? 1 : 0) * std::polar(1.0, -2 * std::numbers::pi * frequency * i / sampleRate);
    return decibels(std::abs(sum));
}

double tone(double frequency, std::size_t i) {
    return std::sin(2 * std::numbers::pi * frequency * static_cast<double>(i) / sampleRate);
}

TEST(Biquad, hasTheDefinedResponses) {
    for (const double frequency : {40.0, 110.0, 180.0}) {
        const Biquad filter = Biquad::highPass(frequency, sampleRate);
        EXPECT_NEAR(responseDB(filter, frequency), -3.01, 0.02);
        // 1 / sqrt(1 + (f0 / f)^4)
        EXPECT_NEAR(responseDB(filter, frequency / 4), -10 * std::log10(1 + 256), 0.1);
        EXPECT_NEAR(responseDB(filter, frequency * 20), 0, 0.01);
    }
    const Biquad shelf = Biquad::highShelf(3000, 3, sampleRate);
    EXPECT_NEAR(responseDB(shelf, 3000), 1.5, 0.01);
    EXPECT_NEAR(responseDB(shelf, 100), 0, 0.02);
    EXPECT_NEAR(responseDB(shelf, 23000), 3, 0.02);
    Biquad none = Biquad::highShelf(3000, 3, 6000);
    EXPECT_EQ(none(0.25), 0.25) << "a rate that cannot hold the frequency";
}

/// Peak of the last second of a steady tone after the compressor, in dBFS.
double steadyOutputDB(const Compressor::Curve& curve, double levelDB) {
    Compressor compressor(curve, sampleRate);
    double peak = 0;
    for (std::size_t i = 0; i < 4 * 48000; ++i) {
        const double out = compressor(std::pow(10, levelDB / 20) * tone(1000, i));
        if (i >= 3 * 48000) peak = std::max(peak, std::abs(out));
    }
    return decibels(peak);
}

TEST(Compressor, hasTheDefinedStaticCurve) {
    for (const double l : {0.0, 0.25, 1.0}) {
        const Compressor::Curve curve{-12 - 12 * l, 1.5 + 3.5 * l, 0.01, 0.1, 6 * l};
        for (const double level : {-60.0, -30.0, -18.0, -9.0, -3.0, 0.0}) {
            const double over = std::max(level - curve.thresholdDB, 0.0);
            EXPECT_NEAR(steadyOutputDB(curve, level), level - over + over / curve.ratio + curve.makeUpDB,
                        0.05)
                << "l " << l << ", level " << level;
        }
    }
}

TEST(Compressor, attacksAndReleasesWithItsTimeConstants) {
    for (const double u : {0.0, 1.0}) {
        const double attack = 0.005 + 0.015 * u, release = 0.05 + 0.45 * u;
        Compressor compressor({-24, 4, attack, release, 0}, sampleRate);
        const auto second = static_cast<std::size_t>(sampleRate);
        std::vector<double> reduction;
        for (std::size_t i = 0; i < 6 * second; ++i) {
            // Loud and then quiet, at half the sample rate: every sample is a peak.
            const double in = (i < 3 * second ? 1.0 : 0.01) * (i % 2 == 0 ? 1 : -1);
            reduction.push_back(-decibels(std::abs(compressor(in) / in)));
        }
        const double full = reduction[3 * second - 1], share = 1 - std::exp(-1);
        EXPECT_NEAR(full, 18, 0.01);
        const auto reached = std::ranges::find_if(reduction, [&](double r) { return r >= share * full; });
        EXPECT_NEAR(static_cast<double>(reached - reduction.begin()) / sampleRate, attack, 0.0005);
        const auto left = std::find_if(reduction.begin() + 3 * second, reduction.end(),
                                       [&](double r) { return r <= (1 - share) * full; });
        EXPECT_NEAR(static_cast<double>(left - reduction.begin()) / sampleRate - 3,
                    release + Compressor::levelSeconds, 0.001);
    }
}

TEST(Limiter, holdsItsCeilingWithoutAStepAndLeavesTheRestAlone) {
    Limiter limiter(0.012, 0.024, sampleRate);
    ASSERT_EQ(limiter.latency(), 576U);
    std::vector<double> gains;
    for (std::size_t i = 0; i < 48000; ++i) {
        const bool isLoud = i >= 10'000 && i < 20'000;
        const double in = (isLoud ? 4.0 : 0.5) * (i % 2 == 0 ? 1 : -1);
        const double out = limiter(in);
        ASSERT_LE(std::abs(out), 1.0) << i;
        if (i < limiter.latency()) continue;
        const std::size_t from = i - limiter.latency();
        gains.push_back(std::abs(out) / (from >= 10'000 && from < 20'000 ? 4.0 : 0.5));
    }
    EXPECT_EQ(gains[9'000], 1) << "before the attack";
    EXPECT_NEAR(gains[10'000], 0.25, 1e-9);
    EXPECT_NEAR(gains[15'000], 0.25, 1e-9);
    for (std::size_t i = 1; i < gains.size(); ++i)
        EXPECT_LT(std::abs(gains[i] - gains[i - 1]), 0.75 / 570) << "a click at " << i;
    // The release begins when the loud part leaves the window, and is averaged over the attack time.
    const double tau = 0.024 * sampleRate, mean = tau / 576 * (std::exp(576 / tau) - 1);
    for (const std::size_t after : {1000U, 2000U, 4000U})
        EXPECT_NEAR(gains[20'000 + after], 1 - 0.75 * mean * std::exp(-static_cast<double>(after) / tau),
                    0.002);
    EXPECT_EQ(gains.back(), 1);
}

TEST(VoiceIsolationChain, givesTheSameSamplesHoweverTheSoundIsCut) {
    std::mt19937 random(test::randomSeed());
    std::vector<float> whole(100'000);
    for (std::size_t i = 0; i < whole.size(); ++i)
        whole[i] = static_cast<float>(std::uniform_real_distribution(-1.2, 1.2)(random) *
                                      (i % 30'000 < 12'000 ? 1 : 0.01));
    whole[500] = 3e38F;
    const VoiceIsolationSettings settings{0.4, 0.25, 0.25, 7};
    std::vector<float> cut = whole;
    VoiceIsolationChain first(settings, sampleRate), second(settings, sampleRate);
    first.process(whole);
    for (std::size_t at = 0; at < cut.size();) {
        const std::size_t some = std::min<std::size_t>(random() % 3000, cut.size() - at);
        second.process(std::span(cut).subspan(at, some));
        at += some;
    }
    EXPECT_EQ(whole, cut);
    const double ceiling = std::pow(10, 7.0 / 20);
    EXPECT_LE(std::abs(std::ranges::max(whole)), ceiling * 1.000001);
    EXPECT_TRUE(std::ranges::all_of(whole, [](float sample) { return std::isfinite(sample); }));
}

TEST(VoiceIsolationChain, bypassesWhatChangesNothing) {
    EXPECT_TRUE((VoiceIsolationSettings{0, 0, 0, 0.005}.isBypass()));
    EXPECT_TRUE((VoiceIsolationSettings{0.001, 0.001, 0.001, -0.009}.isBypass()));
    EXPECT_FALSE((VoiceIsolationSettings{0, 0, 0, 0.02}.isBypass()));
    EXPECT_FALSE((VoiceIsolationSettings{0, 0, 0.002, 0}.isBypass()));
}

} // namespace
} // namespace orvane
