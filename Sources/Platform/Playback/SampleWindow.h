#pragma once

#include "Platform/AudioFile.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace orvane::platform {

/// The samples around a place of a sound file, which moves forward or backward. Silence replaces frames
/// outside the file, frames that cannot be read, and values that are not finite. One thread.
class SampleWindow {
  public:
    explicit SampleWindow(std::unique_ptr<AudioFile> file);

    double sampleRate() const { return sampleRate_; }
    std::size_t channelCount() const { return channels_.size(); }
    std::int64_t frameCount() const { return frameCount_; }
    /// One array for each channel with the frames from `first` on, which may be before the file's beginning.
    /// Valid until the next call. `isReverse`: the next calls are for earlier frames.
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
