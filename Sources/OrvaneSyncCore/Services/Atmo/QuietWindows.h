#pragma once

#include "OrvaneSyncCore/Services/SmartAudio/AudioPass.h"

#include <cstddef>
#include <vector>

namespace orvane {

/// The level of each channel in consecutive windows, starting again at each window of the pass. An incomplete
/// window at the end of a window of the pass is dropped.
class QuietWindows : public SplittableListener {
  public:
    QuietWindows(std::size_t channels, std::size_t windowFrames)
        : rms(channels), windowFrames_(windowFrames), sums_(channels, 0.0) {}

    std::vector<std::vector<float>> rms; ///< linear, by channel and window

    void samples(std::span<const float* const> channels, std::size_t frames) override;
    void windowEnded() override;
    std::unique_ptr<SplittableListener> sibling(std::size_t firstFrame) const override;
    void append(SplittableListener& behind) override;

  private:
    std::size_t windowFrames_;
    std::vector<double> sums_; ///< of squares, for the current window
    std::size_t inWindow_ = 0; ///< frames in the current window
};

} // namespace orvane
