#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Persistence/OutputMarks.h"
#include "OrvaneSyncCore/Services/RenderedAudio/BlockMix.h"
#include "OrvaneSyncCore/Services/RenderedAudio/SmartAudioMixdownRenderer.h"
#include "OrvaneSyncCore/Services/RenderedAudio/VoiceIsolationProcessor.h"
#include "Platform/FileUse.h"
#include "Platform/Stop.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <cmath>
#include <filesystem>
#include <limits>
#include <unistd.h>

namespace orvane {
namespace {

namespace fs = std::filesystem;
constexpr double rate = 1000;

BlockDecision block(double start, double end, int track, double gain = 1) {
    BlockDecision made;
    made.startSeconds = start;
    made.endSeconds = end;
    made.activeTrack = track;
    made.gainMultiplier = gain;
    return made;
}

/// The mix of channels with constant levels, made in pieces of 77 frames.
std::vector<float> mixed(const std::vector<BlockDecision>& blocks, const std::vector<float>& levels,
                         double seconds) {
    BlockMix mix(blocks, 0.25, rate, static_cast<int>(levels.size()));
    std::vector<std::vector<float>> channels;
    for (const float level : levels) channels.emplace_back(100, level);
    std::vector<const float*> pointers;
    for (const auto& channel : channels) pointers.push_back(channel.data());
    std::vector<float> out(static_cast<std::size_t>(seconds * rate));
    for (std::size_t at = 0; at < out.size(); at += 77)
        mix.mix(pointers, std::span(out).subspan(at, std::min<std::size_t>(77, out.size() - at)));
    return out;
}

float largestStep(const std::vector<float>& samples) {
    float largest = 0;
    for (std::size_t i = 1; i < samples.size(); ++i)
        largest = std::max(largest, std::abs(samples[i] - samples[i - 1]));
    return largest;
}

TEST(BlockMix, crossfadesAroundTheBoundary) {
    const auto out = mixed({block(0, 2, 1, 0.5), block(2, 4, 2, 2)}, {0.5F, 0.1F}, 4);
    EXPECT_EQ(out[0], 0.25F);
    EXPECT_EQ(out[1875], 0.25F) << "at the start of the ramp";
    EXPECT_NEAR(out[2000], (0.25 + 0.2) / 2, 1e-6);
    const double u = 0.25; // place in the ramp
    EXPECT_NEAR(out[1937] + (out[1938] - out[1937]) * 0.5, 0.25 - 0.05 * u * u * (3 - 2 * u), 1e-4);
    EXPECT_EQ(out[2125], 0.2F);
    EXPECT_EQ(out[3999], 0.2F);
}

TEST(BlockMix, isSilentWithoutATrackAndStaysWithABlockInAGap) {
    EXPECT_EQ(mixed({block(0, 1, 0), block(5, 6, 1)}, {0.5F}, 1)[999], 0);
    EXPECT_EQ(mixed({block(0, 1, 2)}, {0.5F}, 1)[0], 0) << "a track that the recording does not have";
    const auto gap = mixed({block(0, 1, 1), block(3, 4, 2)}, {0.5F, 0.1F}, 4);
    EXPECT_EQ(gap[2800], 0.5F);
    EXPECT_EQ(gap[3200], 0.1F);
    const auto same = mixed({block(0, 1, 1), block(1, 2, 1)}, {0.3F}, 2);
    EXPECT_LT(largestStep(same), 1e-7);
}

TEST(BlockMix, clipsSoftlyFromSeventyPercentOn) {
    EXPECT_EQ(mixed({block(0, 1, 1)}, {0.69F}, 1)[0], 0.69F);
    EXPECT_NEAR(mixed({block(0, 1, 1)}, {0.7F}, 1)[0], 0.604, 0.001);
    EXPECT_NEAR(mixed({block(0, 1, 1, 10)}, {-0.3F}, 1)[0], -0.995, 0.001);
}

TEST(BlockMix, hasNoClickWhereBlocksAreShorterThanTheRamp) {
    std::vector<BlockDecision> blocks;
    for (int i = 0; i < 30; ++i) blocks.push_back(block(1 + i * 0.1, 1.1 + i * 0.1, 1 + i % 2));
    blocks.push_back(block(4, 4, 2)); // without a length
    blocks.push_back(block(4, 6, 1));
    blocks.push_back(block(std::numeric_limits<double>::quiet_NaN(), 7, 2));
    const auto out = mixed(blocks, {0.6F, 0.0F}, 6);
    EXPECT_LT(largestStep(out), 0.6 * 1.5 / 100 * 1.05) << "steeper than a ramp of 0.1 s";
    EXPECT_NEAR(out[1050], 0.6, 0.001) << "a short block is reached";
    EXPECT_NEAR(out[1150], 0, 0.001);
}

class RenderedAudio : public testing::Test {
  protected:
    /// All samples of channel c are (c + 1) / 10.
    FileURL recording(const std::string& name, int channels, std::uint32_t frames, std::uint32_t hz = 8000) {
        std::vector<float> samples;
        for (std::uint32_t i = 0; i < frames; ++i)
            for (int channel = 0; channel < channels; ++channel)
                samples.push_back(static_cast<float>(channel + 1) / 10);
        return written(name, channels, samples, hz);
    }
    FileURL written(const std::string& name, int channels, const std::vector<float>& samples,
                    std::uint32_t hz) {
        const std::string path = folder_.write("shoot/" + name, "");
        test::WaveMaker()
            .format({.channels = channels, .sampleRate = hz, .samples = test::SampleFormat::float32})
            .samples(samples)
            .writeTo(path);
        return {path};
    }
    static std::vector<float> channel(const RenderResult& result, std::size_t which) {
        const auto file = platform::AudioFile::open(result.url.path);
        std::vector<std::vector<float>> all(static_cast<std::size_t>(file->channelCount()),
                                            std::vector<float>(static_cast<std::size_t>(file->frameCount())));
        std::vector<float*> into;
        for (auto& one : all) into.push_back(one.data());
        EXPECT_EQ(file->read(into, all.front().size()), all.front().size());
        return all.at(which);
    }
    std::size_t filesIn(const std::string& below) const {
        const std::string path = folder_.path("caches/" + below);
        return fs::exists(path) ? static_cast<std::size_t>(std::distance(fs::directory_iterator(path), {}))
                                : 0;
    }

    test::TemporaryDirectory folder_;
    std::shared_ptr<platform::MemorySettingsStore> settings_ =
        std::make_shared<platform::MemorySettingsStore>();
    std::shared_ptr<const RenderedAudioStore> store_ =
        std::make_shared<RenderedAudioStore>(folder_.path("caches"), settings_);
    SmartAudioMixdownRenderer renderer_{store_};
    VoiceIsolationProcessor processor_{store_};
    const std::vector<BlockDecision> blocks_{block(0, 1, 2), block(1, 9, 3)};
};

TEST_F(RenderedAudio, aMixdownIsKeptAndFoundByItsSourceAndBlocks) {
    const FileURL source = recording("T01.WAV", 3, 16001);
    const auto first = renderer_.render(source, blocks_);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->sampleRate, 8000);
    EXPECT_EQ(first->durationSeconds, 16001 / 8000.0);
    EXPECT_EQ(channel(*first, 0), channel(*first, 1));
    EXPECT_EQ(channel(*first, 0)[0], 0.2F);
    EXPECT_EQ(channel(*first, 0)[16000], 0.3F);
    EXPECT_TRUE(isOwnOutput(OutputKind::rendering, first->url.path));
    EXPECT_TRUE(fs::path(first->url.path).filename().string().starts_with("mixdown_"));

    const auto written = fs::last_write_time(first->url.path);
    EXPECT_EQ(SmartAudioMixdownRenderer(store_).render(source, blocks_), first);
    EXPECT_EQ(fs::last_write_time(first->url.path), written) << "nothing was rendered";
    EXPECT_NE(renderer_.render(source, {block(0, 1, 2), block(1, 9, 3, 0.5)})->url, first->url);
    fs::last_write_time(source.path, written - std::chrono::hours(1));
    EXPECT_NE(renderer_.render(source, blocks_)->url, first->url);
    // A damaged file is rendered again.
    const auto now = renderer_.render(source, blocks_);
    fs::resize_file(now->url.path, 5000);
    EXPECT_EQ(renderer_.render(source, blocks_), now);
    EXPECT_EQ(channel(*now, 0).size(), 16001U);
}

TEST_F(RenderedAudio, everyFileOfATakeCounts) {
    TakeSound take;
    take.files = {{recording("T01_1.WAV", 1, 8000), 1, 1, 0, 1},
                  {recording("T01_2.WAV", 2, 8000), 2, 2, 0, 1}};
    const auto first = renderer_.render(take, {block(0, 9, 3)});
    ASSERT_TRUE(first);
    EXPECT_EQ(channel(*first, 0)[4000], 0.2F);
    fs::last_write_time(take.files[1].url.path, fs::file_time_type::clock::now() - std::chrono::hours(1));
    EXPECT_NE(renderer_.render(take, {block(0, 9, 3)})->url, first->url);
    EXPECT_FALSE(processor_.process(take, {})) << "no one file stands for it";
    EXPECT_EQ(channel(*renderer_.renderSolo(take, 1), 0)[10], 0.1F);
    EXPECT_FALSE(renderer_.renderSolo(take, 3));
    EXPECT_FALSE(renderer_.renderSolo(take, -1));
}

TEST_F(RenderedAudio, whatCannotBeRenderedGivesNothing) {
    const FileURL good = recording("T01.WAV", 1, 80000);
    EXPECT_FALSE(renderer_.render(good, {}));
    EXPECT_FALSE(renderer_.render(FileURL{folder_.path("absent.wav")}, blocks_));
    EXPECT_FALSE(renderer_.render(recording("EMPTY.WAV", 2, 0), blocks_));
    // A source that shrinks while it is read.
    const FileURL shrinking = recording("T02.WAV", 1, 80000);
    EXPECT_FALSE(renderer_.render(shrinking, blocks_, 0.25, [&](double share) {
        if (share > 0.4) fs::resize_file(shrinking.path, 100'000);
    }));
    std::stop_source stop;
    const auto stopAt = [&](double) { stop.request_stop(); };
    EXPECT_THROW(renderer_.render(good, blocks_, 0.25, stopAt, stop.get_token()), platform::Stopped);
    EXPECT_EQ(filesIn("mixdowns"), 0U);
    // A folder that not even root can make.
    folder_.write("caches2", "a file");
    const SmartAudioMixdownRenderer blocked(
        std::make_shared<RenderedAudioStore>(folder_.path("caches2"), settings_));
    EXPECT_FALSE(blocked.render(good, blocks_));
}

TEST_F(RenderedAudio, aPreviewHasTheFramesOfItsInputWhateverItHolds) {
    std::vector<float> samples;
    for (int i = 0; i < 40'000; ++i) {
        samples.push_back(i == 100 ? std::numeric_limits<float>::quiet_NaN()
                                   : static_cast<float>(std::sin(i * 0.3)) * (i < 20'000 ? 0.05F : 1.0F));
        samples.push_back(0);
    }
    for (const std::uint32_t hz : {8000U, 44100U, 384'000U}) {
        const FileURL input = written("IN" + std::to_string(hz) + ".WAV", 2, samples, hz);
        const auto preview = processor_.process(input, {0.4, 0.25, 0.25, 0});
        ASSERT_TRUE(preview);
        EXPECT_EQ(preview->sampleRate, hz);
        const auto heard = channel(*preview, 0);
        ASSERT_EQ(heard.size(), 40'000U);
        EXPECT_TRUE(std::ranges::all_of(heard, [](float one) { return std::abs(one) <= 1; }));
        // The output is not shifted: its loud half begins where that of the input does.
        const auto loud = std::ranges::find_if(heard, [](float one) { return std::abs(one) > 0.2F; });
        EXPECT_NEAR(static_cast<double>(loud - heard.begin()), 20'000, 20);
        EXPECT_EQ(processor_.process(input, {0.4, 0.25, 0.25, 0}), preview);
        EXPECT_NE(processor_.process(input, {0.4, 0.25, 0.25, 1})->url, preview->url);
        EXPECT_EQ(processor_.process(input, {0, 0, 0, 0.005})->url, input);
    }
}

TEST_F(RenderedAudio, theLeastRecentlyUsedFileIsRemovedFirst) {
    const FileURL source = recording("T01.WAV", 3, 8000);
    const auto ofChannel = [&](int channel) { return renderer_.renderSolo(source, channel); };
    settings_->set(settings::cachesLimitGB, 150'000 / 1e9); // two files of 64,000 bytes
    const auto first = ofChannel(0), second = ofChannel(1);
    ASSERT_TRUE(first && second);
    fs::last_write_time(first->url.path, fs::file_time_type::clock::now() - std::chrono::hours(3));
    fs::last_write_time(second->url.path, fs::file_time_type::clock::now() - std::chrono::hours(2));
    EXPECT_EQ(ofChannel(0), first); // used again
    ASSERT_TRUE(ofChannel(2));
    EXPECT_TRUE(fs::exists(first->url.path));
    EXPECT_FALSE(fs::exists(second->url.path));
    settings_->set(settings::cachesLimitGB, 0);
    EXPECT_TRUE(fs::exists(ofChannel(1)->url.path)) << "what was just made stays";
    EXPECT_EQ(filesIn("mixdowns"), 1U);
}

} // namespace
} // namespace orvane
