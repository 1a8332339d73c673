#pragma once

#include "Platform/AudioFile.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace orvane::platform {

/// The samples round a place of a sound file that moves, forward or backward. Where the file has none, cannot
/// be read or broke off there is silence, and so in the place of what is no number. One thread.
class SampleWindow {
  public:
    explicit SampleWindow(std::unique_ptr<AudioFile> file);

    double sampleRate() const { return sampleRate_; }
    std::size_t channelCount() const { return channels_.size(); }
    std::int64_t frameCount() const { return frameCount_; }
    /// One array a channel with the frames from `first` on, which may lie before the file's beginning. They
    /// stay until the next call. `isReverse`: the next calls ask for earlier frames.
    std::span<const float* const> frames(std::int64_t first, std::size_t count, bool isReverse);

  private:
    void read(std::int64_t first, std::size_t count, std::size_t at);

    const std::unique_ptr<AudioFile> file_;
    const double sampleRate_;
    const std::int64_t frameCount_;
    std::int64_t filePosition_ = 0;
    std::vector<std::vector<float>> channels_; ///< the frames from `start_` on
    std::vector<float*> readInto_;
    std::vector<const float*> given_;
    std::int64_t start_ = 0;
    std::size_t length_ = 0;
};

} // namespace orvane::platform
