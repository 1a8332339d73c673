#pragma once

#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"

#include <optional>

namespace orvane {

/// The sound that a clip uses, and its place under the picture. Pure; any thread.
struct ClipSound {
    explicit ClipSound(const SyncGroup& group);

    std::optional<TakeSound> take;  ///< absent: the clip has no recording
    double offsetSeconds = 0;       ///< clip time of the take's first sample, the manual offset included
    double durationSeconds = 0;     ///< of the take; 0 if unknown
    double primaryStartSeconds = 0; ///< of the first recording's first sample, on the take's axis

    /// Clip time of the first recording's first sample, where the audio time of anchors begins.
    double primaryOffsetSeconds() const { return offsetSeconds + primaryStartSeconds; }
};

} // namespace orvane
