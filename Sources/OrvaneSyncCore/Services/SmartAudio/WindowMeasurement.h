#pragma once

#include "OrvaneSyncCore/Services/SmartAudio/AudioPass.h"
#include "OrvaneSyncCore/Services/SmartAudio/WindowAnalysis.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace orvane {

/// Measures level, peak and zero crossings of every channel in every window of a pass.
class WindowMeasurement : public SplittableListener {
  public:
    explicit WindowMeasurement(std::size_t channels) : windows_(channels), analyses_(channels) {}

    void hear(const AudioPiece& piece) override;
    void windowEnded() override;
    std::unique_ptr<SplittableListener> sibling(std::size_t firstFrame) const override;
    void append(SplittableListener& behind) override;

    /// One for each channel of the pass.
    std::vector<TrackAnalysis> take() { return std::move(analyses_); }

  private:
    /// One channel in the current window.
    struct Window {
        std::size_t frames = 0;
        double sumOfSquares = 0;
        float peak = 0;
        std::size_t signChanges = 0;
        float lastSample = 0;
    };

    std::vector<Window> windows_;
    std::vector<TrackAnalysis> analyses_;
};

} // namespace orvane
