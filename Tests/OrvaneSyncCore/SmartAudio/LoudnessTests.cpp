#include "MediaFactory/MediaFactory.h"
#include "OrvaneSyncCore/Services/SmartAudio/KWeighting.h"
#include "OrvaneSyncCore/Services/SmartAudio/LUFSMeter.h"
#include "OrvaneSyncCore/Services/SmartAudio/MasterGain.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioPredictor.h"
#include "OrvaneSyncCore/Services/SmartAudio/TrackAdjustments.h"
#include "Support/RandomSeed.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

namespace orvane {
namespace {

using test::SampleFormat;
using test::TemporaryDirectory;
using test::WaveMaker;

using Channels = std::vector<std::vector<float>>;

std::vector<float> sine(double amplitude, double frequency, double sampleRate, double seconds) {
    std::vector<float> samples(static_cast<std::size_t>(seconds * sampleRate));
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<float>(
            amplitude * std::sin(2 * std::numbers::pi * frequency * static_cast<double>(i) / sampleRate));
    return samples;
}

std::optional<double> measured(const Channels& channels, double sampleRate) {
    std::vector<const float*> pointers;
    for (const auto& channel : channels) pointers.push_back(channel.data());
    return LUFSMeter::measureBuffer(pointers, channels.empty() ? 0 : channels.front().size(),
                                    static_cast<int>(channels.size()), sampleRate);
}

double gain(double decibels) { return std::pow(10.0, decibels / 20.0); }

/// The measurement by its definition: filters the whole signal, then measures block after block.
std::optional<double> byTheBook(const Channels& channels, double sampleRate) {
    const auto block = static_cast<std::size_t>(0.4 * sampleRate),
               hop = static_cast<std::size_t>(0.1 * sampleRate);
    std::vector<double> powers;
    std::vector<std::vector<double>> signals; // squares of the filtered samples
    for (const auto& channel : channels) {
        KWeighting filter(1, sampleRate);
        const std::array<const float*, 1> samples{channel.data()};
        auto& signal = signals.emplace_back();
        for (std::size_t i = 0; i < channel.size(); ++i) {
            filter.add(samples, i, 1);
            signal.push_back(filter.takeEnergies()[0]);
        }
    }
    for (std::size_t at = 0; at + block <= signals.front().size(); at += hop) {
        double sum = 0;
        for (const auto& signal : signals)
            for (std::size_t i = at; i < at + block; ++i) sum += signal[i] / static_cast<double>(block);
        powers.push_back(sum);
    }
    const auto meanAbove = [&](double gate) {
        double sum = 0;
        int count = 0;
        for (const double power : powers)
            if (power > gate) sum += power, ++count;
        return sum / count;
    };
    const double absolute = std::pow(10.0, (-70 + 0.691) / 10);
    return -0.691 + 10 * std::log10(meanAbove(std::max(absolute, meanAbove(absolute) / 10)));
}

TEST(LUFSMeter, readsTonesAsTheStandardSays) {
    const auto check = [&](const char* rule, double amplitudeDB, double frequency, double sampleRate,
                           std::size_t channels, double expected, double tolerance) {
        const auto tone = sine(gain(amplitudeDB), frequency, sampleRate, 3);
        const auto lufs = measured(Channels(channels, tone), sampleRate);
        ASSERT_TRUE(lufs) << rule;
        EXPECT_NEAR(*lufs, expected, tolerance) << rule;
    };
    check("a full-scale sine on one channel", 0, 997, 48000, 1, -3.01, 0.01);
    check("two channels add up", -23, 1000, 48000, 2, -23.0, 0.01);
    check("four channels count the same", -20, 997, 48000, 4, -20 - 3.01 + 6.02, 0.01);
    check("the rear of five counts for more", -20, 997, 48000, 5, -20 - 3.01 + 7.65,
          0.01); // as loud as 5.82 channels
    check("of six the fourth counts for nothing", -20, 997, 48000, 6, -20 - 3.01 + 7.65, 0.01);
    check("seven count the same", -20, 997, 48000, 7, -20 - 3.01 + 8.45, 0.01);
    check("below the absolute gate", -80, 997, 48000, 1, -70.0, 0);
}

/// What libebur128 1.2.6 gives for the same signals.
TEST(LUFSMeter, weightsEverySampleRateAsAnotherMeterDoes) {
    struct Case {
        double rate, rumble, voice; // Hz, LUFS
    };
    for (const auto& [rate, rumble, voice] :
         {Case{22050, -19.768, -23.265}, Case{32000, -19.797, -23.303}, Case{44100, -19.815, -23.325},
          Case{48000, -19.818, -23.330}, Case{88200, -19.838, -23.352}, Case{96000, -19.840, -23.354},
          Case{192000, -19.851, -23.366}}) {
        const auto together = [&, rate = rate](const std::vector<std::pair<double, double>>& tones) {
            std::vector<float> sum(static_cast<std::size_t>(rate * 3));
            for (const auto& [frequency, decibels] : tones) {
                const auto tone = sine(gain(decibels), frequency, rate, 3);
                std::transform(sum.begin(), sum.end(), tone.begin(), sum.begin(), std::plus());
            }
            return measured({sum}, rate).value_or(0);
        };
        EXPECT_NEAR(together({{15, -6}, {30, -10}, {60, -20}, {1000, -50}}), rumble, 0.01) << rate;
        EXPECT_NEAR(together({{100, -30}, {2000, -26}, {4000, -30}, {8000, -30}}), voice, 0.01) << rate;
    }
    // 48000 Hz is the only rate for which the standard gives numbers: those are used, and the numbers
    // computed from the analogue filters agree with them.
    const auto exact = KWeighting::coefficients(48000),
               computed = KWeighting::coefficients(48000 * (1 + 1e-12));
    EXPECT_EQ(exact.highPassA, (std::array{-1.99004745483398, 0.99007225036621}));
    for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(exact.shelfB[i], computed.shelfB[i], 1e-9);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_NEAR(exact.shelfA[i], computed.shelfA[i], 1e-9);
        EXPECT_NEAR(exact.highPassA[i], computed.highPassA[i], 1e-9);
    }
}

TEST(LUFSMeter, hasNoResultWhereThereIsNothingToMeasure) {
    const auto samples = [](std::size_t count) { return Channels{std::vector<float>(count, 0.5F)}; };
    EXPECT_FALSE(measured(samples(19199), 48000));
    EXPECT_TRUE(measured(samples(19200), 48000));
    EXPECT_FALSE(measured(Channels{std::vector<float>(48000)}, 48000)); // digital silence
    EXPECT_FALSE(measured({}, 48000));
    EXPECT_FALSE(measured({{}}, 48000));
    for (const double rate : {0.0, -1.0, 1.0, 9.0, 1e300, std::numeric_limits<double>::infinity(),
                              std::numeric_limits<double>::quiet_NaN()})
        EXPECT_FALSE(measured(samples(10000), rate)) << rate;
    EXPECT_TRUE(measured(samples(10000), 10)); // a hop of one sample
}

/// Levels on both sides of the gates, in several channels, also at rates where a block is not four whole
/// hops; one case is so quiet that the absolute gate is the higher one.
TEST(LUFSMeter, gatesAsDefinedHoweverTheSamplesAreCut) {
    std::mt19937 random(test::randomSeed());
    std::normal_distribution<float> noise(0, 1);
    for (const auto& [rate, loudest] :
         {std::pair{48000.0, 1.0F}, {48000.0, 0.0013F}, {11025.0, 1.0F}, {8003.0, 1.0F}, {19.0, 1.0F}}) {
        SCOPED_TRACE(testing::Message() << rate << " Hz, " << loudest);
        Channels channels(3);
        for (const float level : {0.2F, 0.0001F, 0.0F, 0.1F, 0.02F, 0.3F, 0.0F, 0.0F})
            for (int i = 0; i < static_cast<int>(rate * 0.45) + 1; ++i)
                for (auto& channel : channels) channel.push_back(loudest * level * noise(random));
        const auto whole = measured(channels, rate);
        ASSERT_TRUE(whole);
        EXPECT_NEAR(*whole, *byTheBook(channels, rate), 1e-9);

        LUFSMeter meter(3, rate);
        std::uniform_int_distribution<std::size_t> length(0, 7000);
        const std::size_t frames = channels[0].size();
        for (std::size_t at = 0; at < frames;) {
            const std::size_t some = std::min(length(random), frames - at);
            const std::vector<const float*> piece{channels[0].data() + at, channels[1].data() + at,
                                                  channels[2].data() + at};
            meter.add(piece, some);
            at += some;
        }
        EXPECT_EQ(meter.integratedLUFS(), whole); // to the last bit
    }
}

TEST(LUFSMeter, countsNaNAndInfinityAsSilence) {
    Channels dirty{sine(0.5, 997, 48000, 2)}, clean = dirty;
    for (const std::size_t at : {std::size_t{0}, std::size_t{5000}, dirty[0].size() - 1}) {
        dirty[0][at] =
            at == 5000 ? std::numeric_limits<float>::quiet_NaN() : std::numeric_limits<float>::infinity();
        clean[0][at] = 0;
    }
    EXPECT_EQ(measured(dirty, 48000), measured(clean, 48000));
    const auto loudest = measured({std::vector<float>(48000, std::numeric_limits<float>::max())}, 48000);
    EXPECT_TRUE(loudest && std::isfinite(*loudest));
}

TEST(LUFSMeter, streamsFiles) {
    const TemporaryDirectory folder;
    const auto left = sine(0.1, 500, 48000, 5), right = sine(0.3, 2000, 48000, 5);
    std::vector<float> interleaved;
    for (std::size_t i = 0; i < left.size(); ++i) interleaved.insert(interleaved.end(), {left[i], right[i]});
    const std::string bytes =
        WaveMaker().format({.channels = 2, .samples = SampleFormat::float32}).samples(interleaved).bytes();
    EXPECT_EQ(LUFSMeter::measureIntegratedLUFS(FileURL{folder.write("a.wav", bytes)}),
              measured({left, right}, 48000));
    EXPECT_TRUE(LUFSMeter::measureIntegratedLUFS(FileURL{folder.write("cut.wav", bytes.substr(0, 900'000))}));
    EXPECT_FALSE(LUFSMeter::measureIntegratedLUFS(FileURL{folder.write("short.wav", bytes.substr(0, 1000))}));
    EXPECT_FALSE(LUFSMeter::measureIntegratedLUFS(FileURL{folder.path("missing.wav")}));
}

TrackAnalysis track(const std::vector<float>& levels, float zeroCrossingRate = 0.1F) {
    TrackAnalysis analysis;
    for (const float level : levels) analysis.add(level, level, zeroCrossingRate);
    return analysis;
}

TrackAdjustment adjusted(const TrackAnalysis& analysis, SmartAudioMode mode, const SmartAudioConfig& config) {
    return TrackAdjustments::generateAdjustments(std::vector{analysis}, mode, config).at(0);
}

TEST(TrackAdjustments, estimatesTheNoiseFromTheQuietestQuarter) {
    const auto check = [&](const char* rule, const std::vector<float>& levels, double snr) {
        EXPECT_NEAR(TrackAdjustments::estimatedSNR(track(levels)), snr, 1e-2) << rule;
    };
    check("no windows", {}, 60);
    check("fewer than four windows", {0.1F, 0.1F, 0.001F}, 60);
    check("a silent quarter", {0, 0.1F, 0.1F, 0.1F}, 60);
    check("the mean over the quietest window", {0.37F, 0.01F, 0.01F, 0.01F}, 20);
    check("seven windows have a quarter of one", {0.1F, 0.1F, 0.1F, 0.1F, 0.1F, 0.1F, 0.01F}, 18.8046);
    check("the largest floats stay finite", {3e38F, 3e38F, 3e38F, 1e-20F}, 967.04);
}

TEST(TrackAdjustments, recommendsByModeAndSpeech) {
    const SmartAudioConfig studio = SmartAudioConfig::studio;
    const TrackAnalysis noisy = track({0.1F, 0.1F, 0.1F, 0.05F}); // SNR 4.9 dB
    const TrackAnalysis clean = track({0.1F, 0.1F, 0.1F, 0.0001F, 0.1F, 0.1F, 0.1F, 0.0001F});
    // One window of ten has speech: a speech ratio of exactly 0.1. Its narrow spectrum counts as hum.
    const TrackAnalysis seldom = track({0.1F, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 0.0199F);

    const auto off = adjusted(noisy, SmartAudioMode::off, studio);
    EXPECT_FALSE(off.hasAdjustment());
    EXPECT_EQ(off.speechRatio, 1);
    EXPECT_NEAR(off.averageLevelDB, -21.16, 0.01);

    const auto one = adjusted(noisy, SmartAudioMode::studio, studio);
    EXPECT_EQ(one.voiceIsolationAmount, 0.5F);
    EXPECT_EQ(one.loudnessAmount, 0.5F);
    EXPECT_EQ(one.loudnessUniformity, 0.5F);
    EXPECT_FALSE(one.humReductionFrequency);
    EXPECT_FALSE(one.volumeGainDB); // the presets have no target

    const auto quiet =
        adjusted(seldom, SmartAudioMode::custom, {.voiceIsolationAmount = 1, .loudnessTargetDB = -8});
    EXPECT_EQ(quiet.speechRatio, 0.1F);
    EXPECT_FALSE(quiet.voiceIsolationAmount || quiet.volumeGainDB || quiet.loudnessAmount);
    EXPECT_EQ(quiet.humReductionFrequency, 50);
    EXPECT_FALSE(adjusted(seldom, SmartAudioMode::custom, {.autoHumReduction = false}).humReductionFrequency);
    EXPECT_EQ(adjusted(seldom, SmartAudioMode::studio, {.humFrequency = 60}).humReductionFrequency, 60);

    EXPECT_FALSE(adjusted(clean, SmartAudioMode::studio, studio).voiceIsolationAmount);
    EXPECT_EQ(adjusted(clean, SmartAudioMode::custom, studio).voiceIsolationAmount, 0.5F);
    EXPECT_FALSE(adjusted(noisy, SmartAudioMode::custom, {}).loudnessUniformity);
    EXPECT_FALSE(
        adjusted(noisy, SmartAudioMode::studio, {.voiceIsolationAmount = 0, .autoHumReduction = false})
            .hasAdjustment());

    // A signal-to-noise ratio of 52.6 dB counts as 40, and 3/7 of 40/40 is exactly 3/7.
    const TrackAnalysis best = track({0.1F, 0.1F, 0.1F, 0.0001F, 0.0001F, 0.0001F, 0.0001F});
    EXPECT_EQ(adjusted(best, SmartAudioMode::off, studio).bestSourceScore, best.speechRatio());
    EXPECT_EQ(adjusted({}, SmartAudioMode::studio, studio).averageLevelDB, -200);
    EXPECT_EQ(adjusted({}, SmartAudioMode::studio, studio).bestSourceScore, 0);
    EXPECT_FALSE(
        adjusted(track({0.003F}, 0), SmartAudioMode::studio, studio).humReductionFrequency); // too quiet
    EXPECT_FALSE(adjusted(track({0.1F}, 0.02F), SmartAudioMode::studio, studio).humReductionFrequency);
}

TEST(TrackAdjustments, gainsTowardsTheTarget) {
    for (const auto& [levelDB, expected] : std::vector<std::pair<double, std::optional<double>>>{
             {-8.4, {}}, {-8.6, 0.6}, {-28, 12}, {-7.6, {}}, {0, -8}, {20, -12}}) {
        const auto level = static_cast<float>(gain(levelDB));
        const auto one = adjusted(track({level}), SmartAudioMode::studio, {.loudnessTargetDB = -8});
        ASSERT_EQ(one.volumeGainDB.has_value(), expected.has_value()) << levelDB;
        EXPECT_NEAR(one.volumeGainDB.value_or(0), expected.value_or(0), 1e-4) << levelDB;
    }
}

TEST(TrackAdjustments, theFirstOfTheBestTracksIsBest) {
    EXPECT_EQ(TrackAdjustments::bestTrackIndex({}), std::nullopt);
    std::vector<TrackAdjustment> tracks(3);
    for (int i = 0; i < 3; ++i) tracks[static_cast<std::size_t>(i)].trackIndex = i + 1;
    EXPECT_EQ(TrackAdjustments::bestTrackIndex(tracks), 1);
    tracks[1].bestSourceScore = tracks[2].bestSourceScore = 0.5F;
    EXPECT_EQ(TrackAdjustments::bestTrackIndex(tracks), 2);
}

TEST(SmartAudioPredictor, forecastsByEstimateOrCalibration) {
    const auto preset = [](int isolation, int loudness, int uniformity) {
        return SmartAudioPreset{isolation, loudness, uniformity, ""};
    };
    const auto measurement = [](int isolation, int loudness, int uniformity, double delta) {
        return CalibrationMeasurement{{isolation, loudness, uniformity}, 0, 0, delta, "a.wav"};
    };
    const SmartAudioPredictor estimate, empty(CalibrationResult{});
    const SmartAudioPredictor calibrated(CalibrationResult{
        .measurements = {measurement(50, 0, 0, -3), measurement(50, 50, 50, 4), measurement(50, 50, 50, 9)}});
    const auto check = [&](const char* rule, const SmartAudioPreset& chosen, double estimated,
                           double measured) {
        EXPECT_DOUBLE_EQ(estimate.lookupLUFSDelta(chosen), estimated) << rule;
        EXPECT_EQ(empty.lookupLUFSDelta(chosen), estimate.lookupLUFSDelta(chosen)) << rule;
        EXPECT_EQ(calibrated.lookupLUFSDelta(chosen), measured) << rule;
    };
    check("cinematic", SmartAudioPreset::cinematic(), -4.0, -3);
    check("drama, the first of two as near", SmartAudioPreset::drama(), -2.25, -3);
    check("documentary", SmartAudioPreset::documentary(), 0.0, 4);
    check("nothing", preset(0, 0, 0), 0, -3);
    check("no loudness", preset(1, 0, 50), -6, -3);
    check("no uniformity", preset(0, 50, 0), 0, -3);
    check("at most 15 dB", preset(0, 100, 200), 15, 4);
    check("an exact match, the first of two", preset(50, 50, 50), 1.5, 4);
    const auto prediction = estimate.predict(-35, SmartAudioPreset::cinematic(), -27);
    EXPECT_EQ(prediction.postProcessingLUFS, -39);
    EXPECT_EQ(prediction.masterGainDB, 12);
    EXPECT_EQ(prediction.predictedLUFS, -27);
    EXPECT_FALSE(prediction.clippingRisk); // strictly above 12 dB
    EXPECT_TRUE(estimate.predict(-35.1, SmartAudioPreset::cinematic(), -27).clippingRisk);
}

TEST(SmartAudioPredictor, loadsTheCalibrationThatDecodes) {
    const TemporaryDirectory folder;
    const test::ScopedEnvironment home("XDG_DATA_HOME", folder.path().c_str());
    EXPECT_FALSE(SmartAudioPredictor::loadingFromDisk().isCalibrated());
    const std::string path = "Orvane Tandrel/Calibration/calibration.json";
    const CalibrationResult calibration{
        .measuredAt = *dateFromISO8601("2026-11-20T10:00:00.250Z"),
        .sourceLUFS = -23,
        .measurements = {{{40, 25, 25}, 1, 2, -5.5, "Calib_VI40_L25_U25.wav"}}};
    EXPECT_EQ(fromJSON<CalibrationResult>(JSON::parse(toJSON(calibration).dump())), calibration);
    EXPECT_EQ(toJSON(calibration).find("measuredAt")->number(), 816'861'600.25);
    folder.write(path, toJSON(calibration).dump());
    EXPECT_EQ(SmartAudioPredictor::loadingFromDisk().lookupLUFSDelta(SmartAudioPreset::drama()), -5.5);
    for (const char* broken :
         {"", "{}", "[1", R"({"measuredAt": 1e300, "sourcePeakDBFS": 0, "sourceRMSDBFS": 0,
             "sourceLUFS": 0, "measurements": []})"}) {
        folder.write(path, broken);
        EXPECT_FALSE(SmartAudioPredictor::loadingFromDisk().isCalibrated()) << broken;
    }
}

TEST(MasterGain, followsTheProjectsSettings) {
    // `gainDB`: for a clip at -30 LUFS
    const auto check = [&](const std::optional<JSON>& preset, const std::optional<JSON>& storedTarget,
                           const std::string& label, double lufs, double gainDB) {
        platform::MemorySettingsStore store;
        if (preset) store.setByName("smartAudio.preset", *preset);
        if (storedTarget) store.setByName("smartAudio.targetLUFS", *storedTarget);
        const auto target = MasterGain::Target::fromUserDefaults(store);
        EXPECT_EQ(target.preset.label, label);
        EXPECT_EQ(target.targetLUFS, lufs);
        EXPECT_DOUBLE_EQ(MasterGain::gainDB(-30, target, SmartAudioPredictor()), gainDB);
    };
    check({}, {}, "Drama", -27, 5.25);
    check(JSON("Cinematic"), JSON(-23.0), "Cinematic", -23, 11);
    check(JSON("Documentary"), JSON("loud"), "Documentary", -27, 3);
    check(JSON("None"), JSON(-16), "Drama", -16, 16.25);
}

} // namespace
} // namespace orvane
