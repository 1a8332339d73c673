#include "OrvaneSyncCore/Services/RenderedAudio/SmartAudioMixdownRenderer.h"

#include "OrvaneSyncCore/Services/RenderedAudio/BlockMix.h"
#include "OrvaneSyncCore/Services/RenderedAudio/SourceWatch.h"
#include "OrvaneSyncCore/Services/SmartAudio/AudioPass.h"
#include "Platform/MediaInspector.h"
#include "Platform/Text.h"

#include <array>
#include <functional>
#include <span>
#include <string>

namespace orvane {

namespace {

using platform::AudioFile;
using platform::AudioFileWriter;
using Folder = RenderedAudioStore::Folder;

constexpr std::size_t windowFrames = 8192;

/// Writes one channel to both channels.
class Writing : public AudioListener {
  public:
    explicit Writing(AudioFileWriter& out) : out_(out) {}

  protected:
    void write(const float* mono, std::size_t frames) {
        const std::array<const float*, 2> both{mono, mono};
        out_.write(both, frames);
    }

  private:
    AudioFileWriter& out_;
};

class MixWriting : public Writing {
  public:
    MixWriting(BlockMix& mix, AudioFileWriter& out) : Writing(out), mix_(mix), mixed_(windowFrames) {}

    void samples(std::span<const float* const> channels, std::size_t frames) override {
        mix_.mix(channels, std::span(mixed_).first(frames));
        write(mixed_.data(), frames);
    }

  private:
    BlockMix& mix_;
    std::vector<float> mixed_;
};

class SoloWriting : public Writing {
  public:
    SoloWriting(std::size_t channel, AudioFileWriter& out) : Writing(out), channel_(channel) {}

    void samples(std::span<const float* const> channels, std::size_t frames) override {
        write(channels[channel_], frames);
    }

  private:
    std::size_t channel_;
};

void stream(AudioFile& source, std::size_t channels, AudioListener& listener, const RenderProgress& progress,
            const std::stop_token& stop) {
    AudioListener* const only = &listener;
    AudioPass{.channels = channels, .windowFrames = windowFrames, .progress = progress, .stop = stop}.run(
        source, std::span(&only, 1));
}

std::uint64_t mixdownKey(const TakeSound& source, const std::vector<BlockDecision>& blocks,
                         double rampSeconds) {
    RenderKey key;
    key.add(source).add(rampSeconds);
    for (const BlockDecision& block : blocks)
        key.add(block.startSeconds).add(block.endSeconds).add(block.activeTrack).add(block.gainMultiplier);
    return key.value();
}

std::string wave(const std::string& prefix, std::uint64_t key) {
    std::string digits(16, '0');
    constexpr std::string_view hexadecimal = "0123456789abcdef";
    for (std::size_t i = digits.size(); i-- > 0; key >>= 4U) digits[i] = hexadecimal[key & 15U];
    return prefix + digits + ".wav";
}

} // namespace

bool canBeRendered(const AudioFile& source) {
    return source.sampleRate() > 0 && source.sampleRate() <= platform::highestSampleRate &&
           source.channelCount() > 0 && source.frameCount() > 0;
}

AudioFileWriter::Format SmartAudioMixdownRenderer::stereo(const AudioFile& source) {
    return {.sampleRate = source.sampleRate(), .channels = 2};
}

void SmartAudioMixdownRenderer::mixDown(AudioFile& source, const std::vector<BlockDecision>& blocks,
                                        double rampSeconds, AudioFileWriter& out,
                                        const RenderProgress& progress, const std::stop_token& stop) {
    BlockMix mix(blocks, rampSeconds, source.sampleRate(), source.channelCount());
    MixWriting writing(mix, out);
    stream(source, static_cast<std::size_t>(mix.channelsNeeded()), writing, progress, stop);
}

void SmartAudioMixdownRenderer::solo(AudioFile& source, int channelIndex, AudioFileWriter& out,
                                     const RenderProgress& progress, const std::stop_token& stop) {
    const auto channel = static_cast<std::size_t>(channelIndex);
    SoloWriting writing(channel, out);
    stream(source, channel + 1, writing, progress, stop);
}

std::optional<RenderResult> SmartAudioMixdownRenderer::render(const TakeSound& sourceAudio,
                                                              const std::vector<BlockDecision>& blocks,
                                                              double rampSeconds,
                                                              const RenderProgress& progress,
                                                              const std::stop_token& stop) const {
    if (blocks.empty()) return std::nullopt;
    const SourceWatch watch([&] { return mixdownKey(sourceAudio, blocks, rampSeconds); });
    const std::string name = wave("mixdown_", watch.key());
    if (auto known = store_->find(Folder::mixdowns, name)) return known;
    const OpenTake take = openTake(sourceAudio);
    if (!take || !canBeRendered(*take.audio)) return std::nullopt;
    return store_->keep(Folder::mixdowns, name, stereo(*take.audio), [&](AudioFileWriter& out) {
        mixDown(*take.audio, blocks, rampSeconds, out, progress, stop);
        take.throwIfReadFailed();
        return watch.isAsBefore();
    });
}

std::optional<RenderResult> SmartAudioMixdownRenderer::renderSolo(const TakeSound& sourceAudio,
                                                                  int channelIndex,
                                                                  const RenderProgress& progress,
                                                                  const std::stop_token& stop) const {
    if (channelIndex < 0) return std::nullopt;
    const SourceWatch watch(
        [&] { return RenderKey().add("solo").add(sourceAudio).add(channelIndex).value(); });
    const std::string name = wave("solo_ch" + std::to_string(channelIndex) + "_", watch.key());
    if (auto known = store_->find(Folder::mixdowns, name)) return known;
    const OpenTake take = openTake(sourceAudio);
    if (!take || !canBeRendered(*take.audio) || channelIndex >= take.audio->channelCount())
        return std::nullopt;
    return store_->keep(Folder::mixdowns, name, stereo(*take.audio), [&](AudioFileWriter& out) {
        solo(*take.audio, channelIndex, out, progress, stop);
        take.throwIfReadFailed();
        return watch.isAsBefore();
    });
}

} // namespace orvane
