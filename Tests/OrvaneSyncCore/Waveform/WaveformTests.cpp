#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncCore/Services/Persistence/OutputMarks.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioRouter.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformCache.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformImage.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformReduction.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformState.h"
#include "Platform/Files.h"
#include "Support/MemoryAudio.h"
#include "Support/RandomSeed.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"
#include "Support/VirtualMainThread.h"

#include <cmath>
#include <random>

namespace orvane {
namespace {

using Floats = std::vector<float>;
using test::MemoryAudio;

std::vector<Floats> noise(std::size_t channels, std::size_t frames) {
    std::mt19937 random(test::randomSeed());
    std::uniform_real_distribution<float> level(-1.2F, 1.2F);
    std::vector<Floats> made(channels, Floats(frames));
    for (Floats& channel : made)
        for (float& sample : channel) sample = level(random);
    return made;
}

WaveformResult reduced(MemoryAudio file, std::size_t bins, std::size_t threads = 1) {
    return heardWaveform(file, bins, threads).waveform;
}

TEST(WaveformReduction, measuresBinsByTheDefinition) {
    const auto channels = noise(3, 10'007);
    const WaveformResult waveform = reduced({channels, 1000}, 33); // bins of 303 frames
    ASSERT_EQ(waveform.peaks.size(), 33U);
    EXPECT_EQ(waveform.binsPerSecond, 1000.0 / 303);
    EXPECT_EQ(waveform.durationSeconds, 10.007);
    for (const std::size_t bin : {0U, 1U, 32U}) {
        double ofMix = 0, ofThird = 0;
        float peak = 0, peakOfThird = 0;
        for (std::size_t i = bin * 303; i < (bin + 1) * 303; ++i) {
            const double mean = (static_cast<double>(channels[0][i]) + channels[1][i] + channels[2][i]) / 3;
            ofMix += mean * mean;
            ofThird += static_cast<double>(channels[2][i]) * channels[2][i];
            peakOfThird = std::max(peakOfThird, std::abs(channels[2][i]));
            for (const Floats& channel : channels) peak = std::max(peak, std::abs(channel[i]));
        }
        EXPECT_EQ(waveform.peaks[bin], std::min(peak, 1.0F));
        EXPECT_FLOAT_EQ(waveform.rms[bin], static_cast<float>(std::sqrt(ofMix / 303)));
        EXPECT_EQ(waveform.peaksPerChannel[2][bin], std::min(peakOfThird, 1.0F));
        EXPECT_FLOAT_EQ(waveform.rmsPerChannel[2][bin], static_cast<float>(std::sqrt(ofThird / 303)));
    }
}

/// Bins shorter and longer than a window, a share and the whole; alone, and beside an analysis with other
/// windows.
TEST(WaveformReduction, givesTheSameBitsHoweverThePassIsCut) {
    const auto channels = noise(2, 500'123);
    for (const std::size_t bins : {1U, 3U, 61U, 700U, 16000U}) {
        const WaveformResult one = reduced({channels, 8000}, bins);
        for (const std::size_t threads : {2U, 5U})
            EXPECT_EQ(reduced({channels, 8000}, bins, threads), one) << bins << " " << threads;
        for (const std::size_t threads : {1U, 4U}) {
            MemoryAudio file(channels, 8000);
            WaveformReduction reduction(file, bins);
            const auto alongside = [&](const platform::AudioFile&, std::size_t) {
                return std::vector<AudioListener*>{&reduction};
            };
            const auto analysed = SmartAudioRouter::listen(file, 2, threads, {}, {}, alongside);
            EXPECT_EQ(analysed, SmartAudioRouter::listen(file, 2, 1)) << bins;
            EXPECT_EQ(reduction.take(), one) << bins << " " << threads;
        }
    }
}

TEST(WaveformReduction, reducesFilesOfEveryKind) {
    Floats left(1000, 0.5F), right(1000, -0.5F);
    const WaveformResult inverse = reduced({{left, right}, 1000}, 10);
    EXPECT_EQ(inverse.rms, Floats(10, 0));
    EXPECT_EQ(inverse.peaks, Floats(10, 0.5F));
    EXPECT_EQ(inverse.rmsPerChannel[1], Floats(10, 0.5F));

    const WaveformResult mono = reduced({{left}, 1000}, 16000); // one frame per bin
    EXPECT_EQ(mono.peaks.size(), 1000U);
    EXPECT_EQ(mono.binsPerSecond, 1000);
    EXPECT_TRUE(mono.peaksPerChannel.empty() && mono.rmsPerChannel.empty());

    // One file ends within the third bin of ten, the other can't be read there.
    for (const MemoryAudio& cut :
         {MemoryAudio({Floats(250, 0.5F)}, 1000, 1000), MemoryAudio({Floats(1000, 0.5F)}, 1000, -1, 250)})
        for (const std::size_t threads : {1U, 4U}) {
            Floats expected(10, 0);
            expected[0] = expected[1] = expected[2] = 0.5F;
            EXPECT_EQ(reduced(cut, 10, threads).rms, expected);
        }
    EXPECT_EQ(reduced({{Floats()}, 1000}, 10), WaveformResult{});
    EXPECT_EQ(reducedWaveform(FileURL{"/nowhere.wav"}, 10, nullptr, 1), WaveformResult{});
}

class WaveformFiles : public testing::Test {
  protected:
    std::string recording(const char* name, float level) const {
        Floats samples(48'000, 0.0F);
        for (std::size_t i = 20'000; i < 30'000; ++i) samples[i] = i % 4 < 2 ? level : -level;
        return folder_.write(name, test::WaveMaker().format({.channels = 2}).samples(samples).bytes());
    }
    test::TemporaryDirectory folder_, cacheFolder_;
};

TEST_F(WaveformFiles, reopenFromTheCacheAsLongAsTheFileIsTheSame) {
    const TakeSound sound = FileURL{recording("a.wav", 0.5F)};
    WaveformCache cache(cacheFolder_.path());
    const WaveformResult first = reducedWaveform(sound, 100, &cache, 1);
    EXPECT_EQ(first.peaks.size(), 100U);
    const auto place = WaveformCache::placeOf(sound, 100);
    EXPECT_EQ(cache.find(*place), first);
    EXPECT_FALSE(cache.find(*WaveformCache::placeOf(sound, 101)));

    const auto names = platform::files::childNames(cacheFolder_.path());
    ASSERT_EQ(names->size(), 1U);
    const std::string whole = cacheFolder_.read(names->front());
    std::string flipped = whole;
    flipped[whole.size() / 2] ^= 1;
    for (const std::string& damaged : {flipped, whole.substr(0, whole.size() - 5), std::string("ORVWAVE1")}) {
        cacheFolder_.write(names->front(), damaged);
        EXPECT_FALSE(cache.find(*place)) << damaged.size();
    }
    recording("a.wav", 0.25F);
    folder_.write("b.wav", folder_.read("a.wav") + "ab"); // another size, even if the date is the same
    platform::files::rename(folder_.path("b.wav"), folder_.path("a.wav"));
    EXPECT_NE(reducedWaveform(sound, 100, &cache, 1), first);
}

TEST_F(WaveformFiles, theCacheStaysSmall) {
    WaveformCache cache(cacheFolder_.path(), 30'000); // some 7 KB each
    const TakeSound sound = FileURL{recording("a.wav", 0.5F)};
    for (const std::size_t bins : {300U, 301U, 302U, 303U, 304U, 305U, 306U, 307U})
        reducedWaveform(sound, bins, &cache, 1);
    EXPECT_LE(platform::files::childNames(cacheFolder_.path())->size(), 6U);
    EXPECT_TRUE(cache.find(*WaveformCache::placeOf(sound, 307)));
    EXPECT_FALSE(cache.find(*WaveformCache::placeOf(sound, 300)));
}

TEST_F(WaveformFiles, theNewestLoadIsShown) {
    const auto mainThread = std::make_shared<test::VirtualMainThread>();
    const auto state = WaveformState::create(mainThread, nullptr);
    int changes = 0;
    std::vector<double> shares;
    const auto subscription = state->onChange([&] { ++changes; });
    const auto progress = state->onProgress([&] { shares.push_back(state->readShare()); });
    const auto finish = [&](const platform::Task& task) {
        ASSERT_TRUE(mainThread->waitUntil([&] { return task.isDone(); }));
        mainThread->runPosted();
    };
    const FileURL loud{recording("loud.wav", 0.5F)}, quiet{recording("quiet.wav", 0.25F)};
    const platform::Task stale = state->load(loud, 100, true);
    const platform::Task newest = state->load(quiet, 100, true);
    EXPECT_TRUE(state->isLoading());
    finish(newest);
    finish(stale);
    const Waveform& waveform = state->waveform();
    EXPECT_EQ(*std::ranges::max_element(waveform.peaks), 0.25F);
    EXPECT_EQ(waveform.clipDuration, 0.5);
    EXPECT_EQ(waveform.onsetMarkers.size(), 1U);
    EXPECT_EQ(waveform.cachedImagesPerChannel.size(), 2U);
    EXPECT_FALSE(state->isLoading());
    EXPECT_EQ(changes, 3); // two loads began, one ended
    EXPECT_TRUE(!shares.empty() && std::ranges::is_sorted(shares) && shares.back() == 1)
        << "only those of the newest load";
    const platform::Task forgotten = state->load(loud, 100, false);
    state->reset();
    finish(forgotten);
    EXPECT_TRUE(state->waveform().peaks.empty() && state->waveform().cachedImage.isEmpty());
    finish(state->load(FileURL{"/nowhere.wav"}, 100, true));
    EXPECT_FALSE(state->isLoading());
    EXPECT_EQ(state->waveform().binsPerSecond, 0);
}

TEST_F(WaveformFiles, areDrawnRoundTheMiddle) {
    const Floats peaks{0.25F, 0.5F}, rms{0.1F, 0.5F};
    WaveformResult result;
    result.peaks = peaks;
    EXPECT_FLOAT_EQ(displayGain(result), 0.95F / 0.5F);
    EXPECT_EQ(displayGain({.peaks = {0.0005F}}), 1);
    const WaveformImage image = drawnWaveform(peaks, rms, 2, 20); // bars of 9.7 points
    const auto at = [&](std::size_t x, std::size_t row) { return image.pixels[row * 20 + x]; };
    constexpr std::uint8_t full = WaveformImage::mostCoverage, level = WaveformImage::levelBit;
    EXPECT_EQ(at(0, 64), full | level);
    EXPECT_EQ(at(0, 45), full); // between the level and the peak
    EXPECT_EQ(at(0, 84), full); // the same below the middle
    EXPECT_EQ(at(0, 31), 0);
    EXPECT_EQ(at(9, 64), std::lround(0.7 * full) | level); // the gap between the bars
    EXPECT_EQ(at(10, 0), full | level);
    EXPECT_EQ(at(10, 129), full | level);
    const std::string file = folder_.write("waveform.png", pngOf(image));
    EXPECT_TRUE(isOwnOutput(OutputKind::picture, file));
    EXPECT_THROW(pngOf({}), std::runtime_error);
    // More bins than points: each column shows the highest of its bins.
    EXPECT_EQ(drawnWaveform(Floats(31, 0.5F), Floats(31, 0), 2, 20).pixels.front(), full);
}

} // namespace
} // namespace orvane
