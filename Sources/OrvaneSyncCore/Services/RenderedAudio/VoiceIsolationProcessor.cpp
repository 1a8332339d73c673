#include "OrvaneSyncCore/Services/RenderedAudio/VoiceIsolationProcessor.h"

#include "OrvaneSyncCore/Services/RenderedAudio/SmartAudioMixdownRenderer.h"
#include "OrvaneSyncCore/Services/RenderedAudio/SourceWatch.h"
#include "OrvaneSyncCore/Services/SmartAudio/AudioPass.h"
#include "Platform/Log.h"

#include <algorithm>
#include <string>
#include <vector>

namespace orvane {

namespace {

using platform::AudioFileWriter;
using Folder = RenderedAudioStore::Folder;

constexpr std::size_t isolatedFrames = 8192;

/// Feeds the chain and removes its delay.
class PreviewWriting : public AudioListener {
  public:
    PreviewWriting(VoiceIsolationChain& chain, AudioFileWriter& out)
        : chain_(chain), out_(out), toDrop_(chain.latency()) {}

    void samples(std::span<const float* const> channels, std::size_t frames) override {
        if (channels.size() == 1) {
            mono_.assign(channels[0], channels[0] + frames);
        } else {
            sums_.assign(frames, 0.0); // in 64 bits, so that even the largest floats do not overflow
            for (const float* channel : channels)
                for (std::size_t i = 0; i < frames; ++i) sums_[i] += static_cast<double>(channel[i]);
            const auto count = static_cast<double>(channels.size());
            mono_.resize(frames);
            for (std::size_t i = 0; i < frames; ++i) mono_[i] = static_cast<float>(sums_[i] / count);
        }
        pass();
    }
    /// Writes the samples that are still in the chain.
    void end() {
        mono_.assign(chain_.latency(), 0.0F);
        pass();
    }

  private:
    void pass() {
        chain_.process(mono_);
        const std::size_t dropped = std::min(toDrop_, mono_.size());
        toDrop_ -= dropped;
        const float* const kept = mono_.data() + dropped;
        out_.write(std::span(&kept, 1), mono_.size() - dropped);
    }

    VoiceIsolationChain& chain_;
    AudioFileWriter& out_;
    std::size_t toDrop_;
    std::vector<float> mono_;
    std::vector<double> sums_;
};

std::uint64_t previewKey(const TakeSound& input, const VoiceIsolationSettings& settings) {
    return RenderKey()
        .add(input)
        .add(settings.voiceIsoAmount)
        .add(settings.loudnessAmount)
        .add(settings.loudnessUniformity)
        .add(settings.masterGainDB)
        .add(VoiceIsolationChain::version)
        .value();
}

} // namespace

void VoiceIsolationProcessor::render(platform::AudioFile& input, const Settings& settings,
                                     AudioFileWriter& out, const RenderProgress& progress,
                                     const std::stop_token& stop) {
    VoiceIsolationChain chain(settings, input.sampleRate());
    PreviewWriting writing(chain, out);
    AudioListener* const only = &writing;
    AudioPass{.channels = static_cast<std::size_t>(input.channelCount()),
              .windowFrames = isolatedFrames,
              .progress = progress,
              .stop = stop}
        .run(input, std::span(&only, 1));
    writing.end();
}

std::optional<VoiceIsolationProcessor::Result>
VoiceIsolationProcessor::process(const TakeSound& input, const Settings& settings,
                                 const RenderProgress& progress, const std::stop_token& stop) const {
    const bool isBypass = settings.isBypass();
    if (input.files.empty() || (isBypass && input.files.size() > 1)) return std::nullopt;
    const SourceWatch watch([&] { return previewKey(input, settings); });
    const std::string name = "vi_" + std::to_string(watch.key()) + ".wav";
    if (!isBypass)
        if (auto known = store_->find(Folder::voiceIsolation, name)) return known;
    const OpenTake take = openTake(input);
    if (!take) {
        platform::logError("[VoiceIso] inputFile.read failed: " + input.files.front().url.path);
        return std::nullopt;
    }
    if (!canBeRendered(*take.audio)) {
        platform::logError("[VoiceIso] failed to build mono format");
        return std::nullopt;
    }
    const double rate = take.audio->sampleRate();
    if (isBypass)
        return Result{input.files.front().url, static_cast<double>(take.audio->frameCount()) / rate, rate};
    auto result = store_->keep(Folder::voiceIsolation, name, {.sampleRate = rate, .channels = 1},
                               [&](AudioFileWriter& out) {
                                   render(*take.audio, settings, out, progress, stop);
                                   take.throwIfReadFailed();
                                   return watch.isAsBefore();
                               });
    if (!result) platform::logError("[VoiceIso] outputFile create failed: " + name);
    return result;
}

} // namespace orvane
