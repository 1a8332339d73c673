#pragma once

#include <vector>

namespace orvane::SmartAudioBlockRouter {

/// One track in one analysis window.
struct WindowMetrics {
    int trackIndex = 0;         ///< from 1
    float rms = 0;              ///< linear
    float peakAbs = 0;          ///< linear
    bool hasSpeech = false;     ///< the level is above the speech gate
    float zeroCrossingRate = 0; ///< crossings per sample

    bool operator==(const WindowMetrics&) const = default;
};

/// One window of a recording; it begins at `index` times the window's length.
struct PerWindowFrame {
    int index = 0;                         ///< from 0
    std::vector<WindowMetrics> perChannel; ///< by track; without tracks that ended earlier

    bool operator==(const PerWindowFrame&) const = default;
};

} // namespace orvane::SmartAudioBlockRouter
