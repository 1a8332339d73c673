#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncCore/Services/Stems/AudioSTFT.h"
#include "OrvaneSyncCore/Services/Stems/BanditStemSeparator.h"
#include "OrvaneSyncCore/Services/Stems/StemCache.h"
#include "OrvaneSyncCore/Utilities/Base64.h"
#include "Platform/AudioFile.h"
#include "Platform/Files.h"
#include "Platform/Stop.h"
#include "Support/InterfaceWatching.h"
#include "Support/RandomSeed.h"
#include "Support/StemModel.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <atomic>
#include <cmath>
#include <filesystem>
#include <numbers>
#include <random>
#include <thread>

namespace orvane {
namespace {

namespace fs = std::filesystem;

TEST(AudioSTFT, givesTheSamplesBack) {
    std::mt19937 random(test::randomSeed());
    std::uniform_real_distribution<float> uniform(-1, 1);
    AudioSTFT stft;
    for (const std::size_t length :
         {std::size_t{1}, std::size_t{511}, std::size_t{2048}, std::size_t{100'003}}) {
        std::vector<float> samples(length);
        for (float& sample : samples) sample = uniform(random);
        const auto spectrogram = stft.transform(samples);
        EXPECT_EQ(spectrogram.nTime, length / 512 + 1);
        const auto back = stft.inverse(spectrogram.real, spectrogram.imag, spectrogram.nTime, length);
        double error = 0, signal = 0;
        for (std::size_t i = 0; i < length; ++i) {
            error += std::pow(static_cast<double>(back[i]) - static_cast<double>(samples[i]), 2);
            signal += std::pow(static_cast<double>(samples[i]), 2);
        }
        EXPECT_LT(10 * std::log10(error / signal), -120) << length;
    }
    EXPECT_EQ(stft.transform({}).nTime, 1U);
}

TEST(AudioSTFT, scalesByTheRootOfItsLength) {
    // A tone of amplitude 1 at the centre of bin 64 gives half of the window's sum over sqrt(2048).
    std::vector<float> tone(44100);
    for (std::size_t i = 0; i < tone.size(); ++i)
        tone[i] = static_cast<float>(std::cos(2 * std::numbers::pi * 64 / 2048 * static_cast<double>(i)));
    const auto spectrogram = AudioSTFT().transform(tone);
    const std::size_t at = 64 * spectrogram.nTime + 40;
    EXPECT_NEAR(std::hypot(spectrogram.real[at], spectrogram.imag[at]), 1024 / (2 * std::sqrt(2048.0)), 1e-3);
    EXPECT_EQ(spectrogram.imag[40], 0) << "the lowest bin is real";
}

class StemsTest : public testing::Test {
  protected:
    FileURL recording(const std::string& name, double seconds, std::uint32_t hz = 44100, int channels = 1) {
        std::vector<float> samples;
        for (std::size_t i = 0; i < static_cast<std::size_t>(seconds * hz); ++i)
            for (int channel = 0; channel < channels; ++channel)
                samples.push_back(static_cast<float>(
                    0.5 * std::sin(2 * std::numbers::pi * 441 * static_cast<double>(i) / hz)));
        test::WaveMaker()
            .format({.channels = channels, .sampleRate = hz, .samples = test::SampleFormat::float32})
            .samples(samples)
            .writeTo(folder_.write(name, ""));
        return {folder_.path(name)};
    }

    test::TemporaryDirectory folder_;
    test::ScopedEnvironment dataHome_{"XDG_DATA_HOME", folder_.path("data").c_str()};
    std::shared_ptr<platform::MemorySettingsStore> settings_ =
        std::make_shared<platform::MemorySettingsStore>();
    std::shared_ptr<const RenderedAudioStore> store_ =
        std::make_shared<RenderedAudioStore>(folder_.path("caches"), settings_);
};

/// Counts its calls; a test can make a call wait.
class FakeSeparator : public AudioStemSeparator {
  public:
    std::atomic<int> calls = 0;
    std::atomic<bool> isHeldUp = false;
    std::atomic<bool> fails = false;

    bool isAvailable() const override { return true; }
    std::string whyUnavailable() const override { return ""; }
    std::optional<SeparatedStems> separate(const TakeSound& /*audio*/, const std::string& folder,
                                           const std::stop_token& stop) override {
        ++calls;
        while (isHeldUp) {
            platform::throwIfStopped(stop);
            std::this_thread::yield();
        }
        if (fails) throw platform::ModelError("no");
        for (const char* name : {dialogueStemName, musicStemName, effectsStemName})
            platform::files::writeAtomically(folder + "/" + name, name);
        return SeparatedStems{
            {folder + "/dialogue.wav"}, {folder + "/music.wav"}, {folder + "/effects.wav"}, 44100, 2};
    }
};

TEST_F(StemsTest, theCacheSeparatesARecordingOnce) {
    const auto separator = std::make_shared<FakeSeparator>();
    StemCache cache(separator, store_);
    const FileURL source = recording("T01.WAV", 1);
    separator->isHeldUp = true;
    std::optional<SeparatedStems> first, second;
    std::thread one([&] { first = cache.stems(source); });
    while (separator->calls == 0) std::this_thread::yield();
    std::thread other([&] { second = cache.stems(source); });
    separator->isHeldUp = false;
    one.join();
    other.join();
    ASSERT_TRUE(first && second);
    EXPECT_EQ(*first, *second);
    EXPECT_EQ(separator->calls, 1);
    fs::remove(first->effectsURL.path);
    EXPECT_TRUE(cache.stems(source));
    EXPECT_EQ(separator->calls, 2) << "a folder without one of the files is no hit";
    const std::string before = StemCache::key(source);
    fs::last_write_time(source.path, fs::file_time_type::clock::now() - std::chrono::hours(1));
    EXPECT_NE(StemCache::key(source), before);

    separator->fails = true;
    EXPECT_THROW(cache.stems(source), platform::ModelError);
    separator->fails = false;
    EXPECT_TRUE(cache.stems(source)) << "a failure is not in the way of the next try";
    const auto folder = fs::path(first->dialogueURL.path).parent_path().parent_path();
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 2);
    cache.purgeAll();
    EXPECT_TRUE(fs::is_empty(folder));
    EXPECT_FALSE(StemCache::bySettings(*settings_, store_)->stems(source)) << "off by default";
}

TEST_F(StemsTest, aSeparatorSaysWhyItIsUnavailable) {
    BanditStemSeparator without(folder_.path("absent.onnx"), {folder_.path()});
    without.prepare();
    EXPECT_FALSE(without.isAvailable());
    EXPECT_TRUE(without.whyUnavailable().starts_with("BanditV2.onnx not installed"))
        << without.whyUnavailable();
    EXPECT_FALSE(without.separate(recording("T01.WAV", 1), folder_.path()));
    EXPECT_EQ(test::whatHoldsUp([] { platform::ModelRuntime::find({}); }).front(), "looking for a library");
}

TEST_F(StemsTest, theModelRunsMinuteByMinute) {
    const std::vector<std::string> folders{test::runtimeFolder(folder_.path())};
    const test::TemporaryDirectory reports; // where a runtime stores reports before it sends them
    ::setenv("XDG_CACHE_HOME", reports.path().c_str(), 1);
    if (!platform::ModelRuntime::find(folders))
        GTEST_SKIP() << "needs ONNX Runtime: Scripts/install-dependencies.sh models";
    const auto bytes = base64::decoded(test::passThroughModel);
    ASSERT_TRUE(bytes);
    const std::string model = folder_.write("model.onnx", *bytes);
    BanditStemSeparator separator(model, folders);
    separator.prepare();
    ASSERT_TRUE(separator.isAvailable()) << separator.whyUnavailable();
    const auto stems = separator.separate(recording("LONG.WAV", 70, 48000, 2), folder_.path());
    ASSERT_TRUE(stems);
    EXPECT_EQ(stems->durationSeconds, 70);
    const auto samples = [](const FileURL& url) {
        const auto file = platform::AudioFile::open(url.path);
        std::vector<float> all(static_cast<std::size_t>(file->frameCount()));
        float* const into = all.data();
        EXPECT_EQ(file->read({&into, 1}, all.size()), all.size());
        return all;
    };
    const auto dialogue = samples(stems->dialogueURL), music = samples(stems->musicURL);
    ASSERT_EQ(dialogue.size(), 70U * 44100);
    for (const std::size_t at : {std::size_t{5000}, BanditStemSeparator::chunkSamples - 1,
                                 BanditStemSeparator::chunkSamples, std::size_t{3'000'000}}) {
        const double expected = 0.5 * std::sin(2 * std::numbers::pi * 441 * static_cast<double>(at) / 44100);
        EXPECT_NEAR(dialogue[at], expected, 1e-4) << at;
        EXPECT_NEAR(music[at], expected / 2, 1e-4) << at;
    }
    EXPECT_EQ(samples(stems->effectsURL)[5000], 0);
    EXPECT_TRUE(std::filesystem::is_empty(reports.path()));
    folder_.write("broken.onnx", "no model");
    BanditStemSeparator broken(folder_.path("broken.onnx"), folders);
    broken.prepare();
    EXPECT_NE(broken.whyUnavailable().find("can't be loaded"), std::string::npos);
}

} // namespace
} // namespace orvane
