#include "MediaFactory/MediaFactory.h"
#include "OrvaneSyncCore/Services/SmartAudio/AudioPass.h"
#include "OrvaneSyncCore/Services/SmartAudio/ChannelReadingDiagnostic.h"
#include "OrvaneSyncCore/Services/SmartAudio/KWeighting.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioRouter.h"
#include "OrvaneSyncCore/Services/SmartAudio/WindowMeasurement.h"
#include "Platform/Stop.h"
#include "Support/MemoryAudio.h"
#include "Support/RandomSeed.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <atomic>
#include <mutex>
#include <stop_token>

namespace orvane {
namespace {

using test::MemoryAudio;
using test::SampleFormat;
using test::TemporaryDirectory;
using test::WaveMaker;

std::vector<TrackAnalysis> measured(MemoryAudio file, std::size_t channels, AudioPass pass) {
    pass.channels = channels;
    WindowMeasurement measurement(channels);
    std::array<AudioListener*, 1> listeners{&measurement};
    pass.run(file, listeners);
    return measurement.take();
}

TEST(AudioPass, measuresWindows) {
    const float nan = std::numeric_limits<float>::quiet_NaN(),
                infinity = std::numeric_limits<float>::infinity();
    const auto check = [&](const char* rule, const std::vector<float>& window, float rms, float peak,
                           float crossings) {
        const auto analysis = measured({{window}, 48000}, 1, {.windowFrames = window.size()}).at(0);
        EXPECT_EQ(analysis.windowRMS, std::vector{rms}) << rule;
        EXPECT_EQ(analysis.windowPeaks, std::vector{peak}) << rule;
        EXPECT_EQ(analysis.spectralCentroids, std::vector{crossings}) << rule;
    };
    check("a square wave at full scale", {1, -1, 1, -1}, 1, 1, 0.75F);
    check("a negative peak counts", {0, 0, -0.5F, 0}, 0.25F, 0.5F, 0.5F);
    check("one sample", {0.25F}, 0.25F, 0.25F, 0);
    check("zero is positive, whatever its sign", {-0.0F, 0, 1, -0.0F}, 0.5F, 1, 0);
    check("what is no number is silence", {nan, infinity, -infinity, 1}, 0.5F, 1, 0);
    check("the largest float", {3e38F, -3e38F}, 3e38F, 3e38F, 0.5F);
}

TEST(AudioPass, endsWhereTheFileDoes) {
    const std::vector<float> sound(25, 0.5F);
    const auto windows = [&](std::int64_t claimed, const AudioPass& pass) {
        return measured({{sound}, 48000, claimed}, 1, pass).at(0).totalWindows;
    };
    EXPECT_EQ(windows(25, {.windowFrames = 10}), 3); // the last window is short
    EXPECT_EQ(windows(1000, {.windowFrames = 10, .windows = 100}), 3);
    EXPECT_EQ(windows(1000, {.windowFrames = 5, .windows = 200}), 5); // the file ends with a window
    EXPECT_EQ(windows(25, {.windowFrames = 10, .windows = 2}), 2);
    EXPECT_EQ(windows(25, {.windowFrames = 0}), 0);
    EXPECT_EQ(windows(1000, {.windowFrames = 1, .windows = 1000, .concurrency = 4}), 25);
    // Samples after a place that can't be read are not joined to those before it.
    const MemoryAudio broken({std::vector<float>(1000, 0.5F)}, 48000, -1, 333);
    for (const std::size_t threads : {1U, 4U})
        EXPECT_EQ(measured(broken, 1, {.windowFrames = 10, .concurrency = threads}).at(0).totalWindows, 34);
}

/// On one thread and on several; also in a window that is as long as the file.
TEST(AudioPass, readsNothingMoreAfterAStop) {
    struct Stopping final : SplittableListener {
        explicit Stopping(std::stop_source source) : stop(std::move(source)) {}
        void samples(std::span<const float* const> /*channels*/, std::size_t /*frames*/) override {
            if (++*pieces == 3) stop.request_stop();
        }
        std::unique_ptr<SplittableListener> sibling(std::size_t /*firstFrame*/) const override {
            return std::make_unique<Stopping>(*this);
        }
        void append(SplittableListener& /*behind*/) override {}
        std::stop_source stop;
        std::shared_ptr<std::atomic<int>> pieces = std::make_shared<std::atomic<int>>(0);
    };
    for (const std::size_t threads : {1U, 4U})
        for (const std::size_t window : {1000U, 4'000'000U}) {
            MemoryAudio file({std::vector<float>(4'000'000)}, 48000);
            Stopping listener{{}};
            std::array<AudioListener*, 1> listeners{&listener};
            const AudioPass pass{
                .windowFrames = window, .concurrency = threads, .stop = listener.stop.get_token()};
            EXPECT_THROW(pass.run(file, listeners), platform::Stopped);
            EXPECT_LT(*listener.pieces, 20) << threads << " " << window;
        }
}

/// Windows longer and shorter than the pieces that are read, on one thread and on several.
TEST(AudioPass, givesTheSameBitsOnAnyNumberOfThreads) {
    std::mt19937 random(test::randomSeed());
    std::uniform_real_distribution<float> level(-1, 1);
    std::vector<std::vector<float>> channels(3, std::vector<float>(400'007));
    for (auto& channel : channels)
        for (float& sample : channel) sample = level(random);
    for (const std::size_t length : {1000U, 12000U, 20011U}) {
        const MemoryAudio file(channels, 48000);
        const auto one = measured(file, 3, {.windowFrames = length});
        EXPECT_EQ(one[2].totalWindows, static_cast<int>(400'007 / length + 1));
        for (const std::size_t threads : {1U, 2U, 5U}) {
            std::vector<double> shares;
            const auto tell = [&](double share) { shares.push_back(share); };
            AudioPass pass{.windowFrames = length, .concurrency = threads, .progress = tell};
            EXPECT_EQ(measured(file, 3, pass), one) << length;
            EXPECT_TRUE(std::ranges::is_sorted(shares) && shares.size() <= 100) << length;
            EXPECT_EQ(shares.back(), 1) << length;
        }
        // Compared with the plain definition.
        for (std::size_t window = 0; window < 3; ++window) {
            double sum = 0;
            int changes = 0;
            for (std::size_t i = window * length; i < (window + 1) * length; ++i) {
                sum += static_cast<double>(channels[1][i]) * channels[1][i];
                if (i > window * length && (channels[1][i] >= 0) != (channels[1][i - 1] >= 0)) ++changes;
            }
            const auto count = static_cast<double>(length);
            EXPECT_FLOAT_EQ(one[1].windowRMS[window], static_cast<float>(std::sqrt(sum / count)));
            EXPECT_EQ(one[1].spectralCentroids[window], static_cast<float>(changes / count));
        }
    }
}

/// Every build gives the same bits: the expected numbers come from another build.
TEST(AudioPass, givesTheSameBitsInEveryBuild) {
    std::vector<std::vector<float>> channels(1);
    std::uint32_t state = 1;
    for (int i = 0; i < 30000; ++i) {
        state = state * 1664525U + 1013904223U;
        channels[0].push_back(static_cast<float>(static_cast<std::int32_t>(state)) / 2147483648.0F);
    }
    const auto analysis = measured({channels, 48000}, 1, {.windowFrames = 12000}).at(0);
    EXPECT_EQ(analysis.windowRMS, (std::vector<float>{0x1.264cbap-1F, 0x1.2620dep-1F, 0x1.280332p-1F}));
    KWeighting filter(1, 48000);
    const std::vector<const float*> samples{channels[0].data()};
    filter.add(samples, 0, 30000);
    EXPECT_EQ(filter.takeEnergies(), std::vector{0x1.7753d9f791256p+14});
}

class SmartAudioRouterTest : public testing::Test {
  protected:
    SmartAudioResult analyze(const SmartAudioRequest& request, std::size_t threads = 2) const {
        return SmartAudioRouter(threads, folder.path()).analyze(request);
    }
    SmartAudioRequest request(const std::string& wave, int channelCount) const {
        return {.sound = FileURL{folder.write("take.wav", wave)},
                .channelCount = channelCount,
                .blockSettings = SmartAudioBlockSettings{}};
    }

    TemporaryDirectory folder;
};

/// `seconds` of noise; each channel has one of the levels.
std::string noise(const std::vector<float>& levels, double seconds, test::WaveFormat format = {}) {
    std::mt19937 random(1); // a fixed signal, for whose windows the choices are known
    std::uniform_real_distribution<float> value(-1, 1);
    format.channels = static_cast<int>(levels.size());
    std::vector<float> interleaved;
    for (std::size_t i = 0; i < static_cast<std::size_t>(seconds * format.sampleRate); ++i)
        for (const float level : levels) interleaved.push_back(level * value(random));
    return WaveMaker().format(format).samples(interleaved).bytes();
}

/// Whatever a file contains, the result has the requested number of tracks, whole windows of what could be
/// read, and only numbers with a JSON form; on one thread and on two.
TEST_F(SmartAudioRouterTest, analysesAnyFile) {
    const float nan = std::numeric_limits<float>::quiet_NaN(),
                infinity = std::numeric_limits<float>::infinity(),
                largest = std::numeric_limits<float>::max();
    const std::string take = noise({0.1F, 0.2F}, 10);
    const auto pattern = [](const std::vector<float>& values) { // sixteen channels, one second
        std::vector<float> interleaved;
        for (std::size_t i = 0; i < 16 * 1000; ++i) interleaved.push_back(values[i / 16 % values.size()]);
        return WaveMaker()
            .format({.channels = 16, .sampleRate = 1000, .samples = SampleFormat::float32})
            .samples(interleaved)
            .bytes();
    };
    struct Case {
        const char* what;
        std::string wave;
        int channelCount;
        std::size_t tracks;
        double end; ///< seconds of the last block; 0: none
        int heard;  ///< tracks with speech
    };
    for (const Case& one : std::vector<Case>{
             {"no sound", "RIFF", 2, 0, 0, 0},
             {"no frames", WaveMaker().format({}).silence(0).bytes(), 2, 0, 0, 0},
             {"no channels", WaveMaker().format({.channels = 0}).chunk("data", "12345678").bytes(), 2, 0, 0,
              0},
             {"no channels asked for", take, 0, 0, 0, 0},
             {"fewer than none", take, -3, 0, 0, 0},
             {"fewer than there are", take, 1, 1, 10, 1},
             {"more than there are", take, 64, 64, 10, 2},
             {"64 channels", noise(std::vector<float>(64, 0.1F), 1, {.sampleRate = 8000}), 64, 64, 1, 64},
             {"an end before the one that it claims", take.substr(0, take.size() / 2), 2, 2, 4.75, 2},
             {"one sample", noise({0.1F}, 1.0 / 48000), 1, 1, 0, 0},
             {"a sample a second", noise({0.1F}, 30, {.sampleRate = 1}), 2, 2, 0, 0},
             {"384,000 a second", noise({0.1F, 0.2F}, 1, {.sampleRate = 384000}), 2, 2, 1, 2},
             {"digital silence", pattern({0}), 16, 16, 1, 0},
             {"full scale", pattern({1, -1}), 16, 16, 1, 16},
             {"no numbers", pattern({nan}), 16, 16, 1, 0},
             {"infinite ones", pattern({infinity, -infinity}), 16, 16, 1, 0},
             {"some that are none", pattern({0.5F, nan, infinity}), 16, 16, 1, 16},
             {"the largest", pattern({largest, -largest}), 16, 16, 1, 16},
             {"the smallest", pattern({1e-45F, -1e-45F}), 16, 16, 1, 0},
             {"both", pattern({1e-30F, largest}), 16, 16, 1, 16},
         })
        for (const SmartAudioMode mode : {SmartAudioMode::off, SmartAudioMode::cinematic}) {
            SCOPED_TRACE(one.what);
            SmartAudioRequest asked = request(one.wave, one.channelCount);
            asked.mode = mode;
            asked.config = SmartAudioConfig{.voiceIsolationAmount = 1, .loudnessTargetDB = -8};
            asked.ixmlTracks = {{0, "zeroth"}, {1, "Boom"}, {65, "beyond"}, {1 << 30, "far beyond"}};
            const auto result = analyze(asked, 1);
            EXPECT_EQ(result, analyze(asked, 2));
            EXPECT_EQ(result == SmartAudioResult{}, one.tracks == 0);
            EXPECT_EQ(result.tracks.size(), one.tracks);
            EXPECT_EQ(result.blocks.empty() ? 0 : result.blocks.back().endSeconds, one.end);
            const auto heard = std::ranges::count_if(
                result.tracks, [](const TrackAdjustment& track) { return track.speechRatio > 0; });
            EXPECT_EQ(heard, one.heard);
            EXPECT_EQ(toJSON(result).dump().find("null"), std::string::npos);
            EXPECT_EQ(SmartAudioRouter::endsEarly(result), one.end == 4.75);
        }
    EXPECT_EQ(analyze({.sound = FileURL{folder.path("missing.wav")}, .channelCount = 2}), SmartAudioResult{});
    EXPECT_EQ(SmartAudioResult{}.windowDurationSeconds, 0.25);
}

TEST_F(SmartAudioRouterTest, analysesTheRestOfAFileThatShrinksWhileItIsRead) {
    const std::string bytes = noise({0.1F, 0.2F}, 20, {.sampleRate = 8000});
    for (const std::size_t threads : {1U, 2U}) {
        const std::string path = folder.write("take.wav", bytes);
        const auto file = platform::AudioFile::open(path);
        ASSERT_TRUE(file);
        std::vector<double> shares;
        const auto analyses = SmartAudioRouter::listen(*file, 2, threads, [&](double share) {
            static std::mutex mutex;
            const std::lock_guard lock(mutex);
            if (shares.empty()) std::filesystem::resize_file(path, bytes.size() / 4);
            shares.push_back(share);
        });
        ASSERT_EQ(analyses.size(), 2U);
        EXPECT_GE(analyses[1].totalWindows, 19);
        EXPECT_LT(analyses[1].totalWindows, 80);
        EXPECT_TRUE(std::ranges::all_of(shares, [](double share) { return share > 0 && share < 1; }));
    }
}

TEST_F(SmartAudioRouterTest, analysesWholeWindowsOfExistingTracks) {
    const auto silence = [](std::uint32_t rate, std::uint64_t frames) {
        return WaveMaker()
            .format({.sampleRate = rate, .samples = SampleFormat::pcm16})
            .silence(frames)
            .bytes();
    };
    // `windows`: of track 1, by the length of the segments
    const auto check = [&](const char* rule, const std::string& wave, int channelCount, std::size_t windows) {
        SCOPED_TRACE(rule);
        SmartAudioRequest asked = request(wave, channelCount);
        asked.blockSettings.reset();
        const auto result = analyze(asked);
        ASSERT_EQ(result.tracks.size(), static_cast<std::size_t>(channelCount));
        EXPECT_EQ(result.bestTrackIndex, 1);
        const double end =
            result.windowedBestTracks.empty() ? 0 : result.windowedBestTracks.back().endSeconds;
        EXPECT_EQ(end, 0.25 * static_cast<double>(windows));
        EXPECT_TRUE(result.blocks.empty() && result.channelClassifications.empty() &&
                    !result.detectedCharacter);
        for (const auto& track : result.tracks) {
            EXPECT_EQ(track.speechRatio, 0);
            EXPECT_EQ(track.bestSourceScore, 0);
            EXPECT_EQ(track.averageLevelDB, -200);
        }
    };
    check("shorter than a window", silence(48000, 11999), 2, 0);
    check("one sample", silence(48000, 1), 1, 0);
    check("a window", silence(48000, 12000), 1, 1);
    check("the rest is dropped", silence(48000, 35999), 1, 2);
    check("windows without a sample", silence(1, 1000), 3, 0);
    check("windows of one sample", silence(4, 9), 1, 9);
    check("a third of a sample is dropped", silence(11025, 2756 * 3), 1, 3);
    check("384 kHz", silence(384000, 192000), 64, 2);
    check("the first 2500 s of a longer recording", silence(8, 2 * 12000), 1, 10000);
}

TEST_F(SmartAudioRouterTest, namesRoutesAndRecommends) {
    SmartAudioRequest asked = request(noise({0.02F, 0.3F, 0.001F}, 8), 4);
    asked.mode = SmartAudioMode::studio;
    asked.ixmlTracks = {{1, "Boom"}, {2, "Lav (Anna)"}, {7, "beyond"}};
    const auto result = analyze(asked);
    ASSERT_EQ(result.tracks.size(), 4U);
    EXPECT_EQ(result.bestTrackIndex,
              1); // both speak throughout; the first of equals wins, or the one that is cleaner by chance
    EXPECT_EQ(result.tracks[1].speechRatio, 1);
    EXPECT_EQ(result.tracks[1].loudnessAmount, 0.5F);
    EXPECT_EQ(result.tracks[2].speechRatio, 0);
    EXPECT_EQ(result.tracks[3].averageLevelDB, -200); // a track that the file does not have
    ASSERT_EQ(result.channelClassifications.size(), 4U);
    EXPECT_EQ(result.channelClassifications[1].speakerName, "anna");
    EXPECT_EQ(result.channelClassifications[3].source, "Heuristic: no iXML on this ch — defaulting to Lav");
    ASSERT_FALSE(result.blocks.empty());
    EXPECT_EQ(result.blocks.back().endSeconds, 8);
    EXPECT_TRUE(result.detectedCharacter);
    ASSERT_FALSE(result.windowedBestTracks.empty());
    EXPECT_EQ(result.windowedBestTracks[0].bestTrackIndex, result.blocks[0].activeTrack);

    asked.channelCount = 1; // fewer than the file has
    const auto one = analyze(asked);
    EXPECT_EQ(one.tracks.size(), 1U);
    EXPECT_EQ(one.tracks[0], result.tracks[0]);
}

TEST_F(SmartAudioRouterTest, measuresStems) {
    const auto stem = [&](const char* name, float level) {
        const std::vector<float> samples(static_cast<std::size_t>(48000 * 1.1), level);
        return FileURL{folder.write(
            name, WaveMaker().format({.samples = SampleFormat::float32}).samples(samples).bytes())};
    };
    const SeparatedStems stems{
        stem("d.wav", 0.25F), stem("m.wav", -0.125F), {folder.path("missing.wav")}, 48000, 1.1};
    EXPECT_EQ(computeStemMetrics(stems, 0.25, 0.5F),
              (StemMetrics{std::vector(4, 0.25F), std::vector(4, 0.25F), std::vector(4, 0.125F), 0.25F}));
    EXPECT_EQ(computeStemMetrics(stems, 0.25, 0.1F).musicProbability, 1);
    EXPECT_EQ(computeStemMetrics(stems, 0.25, 1e-6F).musicProbability, 0);
    EXPECT_EQ(computeStemMetrics({}, 0.25, 0.5F), StemMetrics{});
    SmartAudioRequest asked = request(noise({0.1F}, 2), 1);
    asked.stems = stems;
    EXPECT_EQ(analyze(asked).stemMetrics->dialogPerWindowPeak, std::vector(4, 0.25F));
}

TEST_F(SmartAudioRouterTest, comparesTheTwoWaysToReadAChannel) {
    const FileURL take{folder.write("take.wav", noise({0.1F, 0.2F}, 2))};
    const std::string report = diagnoseChannelReading(take, 2, folder.path());
    EXPECT_EQ(folder.read("orvane_channel_reading_diagnostic.txt"), report);
    EXPECT_TRUE(report.starts_with("=== Channel Reading Diagnostic ===\n"));
    EXPECT_NE(report.find("Compared: 8 windows · differing: 0\n"), std::string::npos) << report;
    for (const int channel : {0, 3})
        EXPECT_NE(diagnoseChannelReading(take, channel, folder.path()).find("Compared: 0 windows"),
                  std::string::npos);
    EXPECT_NE(diagnoseChannelReading({folder.path("missing.wav")}, 1, folder.path()).find("cannot be opened"),
              std::string::npos);
}

} // namespace
} // namespace orvane
