#pragma once

#include "Platform/AudioFile.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace orvane::test {

/// Sound in memory, one list of samples per channel. It may end earlier than it states, and one frame may be
/// unreadable.
class MemoryAudio final : public platform::AudioFile {
  public:
    MemoryAudio(std::vector<std::vector<float>> channels, double sampleRate, std::int64_t claimed = -1,
                std::size_t unreadableFrame = std::numeric_limits<std::size_t>::max())
        : channels_(std::move(channels)), sampleRate_(sampleRate),
          claimed_(claimed < 0 ? static_cast<std::int64_t>(channels_.front().size()) : claimed),
          unreadableFrame_(unreadableFrame) {}

    double sampleRate() const override { return sampleRate_; }
    int channelCount() const override { return static_cast<int>(channels_.size()); }
    std::int64_t frameCount() const override { return claimed_; }
    bool seek(std::int64_t frame) override {
        at_ = static_cast<std::size_t>(frame);
        return true;
    }
    std::size_t read(std::span<float* const> channels, std::size_t frames) override {
        const std::size_t start = std::min(at_, channels_.front().size());
        std::size_t some = std::min(frames, channels_.front().size() - start);
        if (start <= unreadableFrame_) some = std::min(some, unreadableFrame_ - start);
        for (std::size_t i = 0; i < channels.size(); ++i)
            std::copy_n(channels_[i].data() + start, some, channels[i]);
        at_ += some;
        return some;
    }
    std::unique_ptr<AudioFile> another() const override { return std::make_unique<MemoryAudio>(*this); }

  private:
    std::vector<std::vector<float>> channels_;
    double sampleRate_;
    std::int64_t claimed_;
    std::size_t unreadableFrame_;
    std::size_t at_ = 0;
};

} // namespace orvane::test
