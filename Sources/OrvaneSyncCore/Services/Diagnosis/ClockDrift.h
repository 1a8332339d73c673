#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/HandledClips.h"

#include <cstddef>
#include <optional>

namespace orvane {

/// A clock of a card that runs fast or slow against the cameras', by what was heard of clips spread over the
/// day. In seconds; times are those of the clips on the line of days and times of day.
struct ClockDrift {
    double perSecond = 0;
    double originSeconds = 0, atOrigin = 0; ///< the middle of the clips that were heard, and the offset there
    double firstSeconds = 0, lastSeconds = 0; ///< of those that were heard
    std::size_t count = 0;                    ///< of those

    /// To be added to the recordings under a clip that begins then.
    double offsetAt(double seconds) const { return atOrigin + perSecond * (seconds - originSeconds); }
};
/// Absent where the distances do not lie on a line, or do not change by what can be seen.
std::optional<ClockDrift> clockDriftOf(const HandledClips& card);

/// Doubts all clips of the card that nobody moved, each with its own offset.
void addClockDrift(const Shoot& shoot, const CameraAndCard& key, const HandledClips& card,
                   const ClockDrift& drift, SyncDoubts& doubts);
/// The same of the clips of another camera with sound of that card, of which nothing was heard: whose clock
/// it is, the recorder's or the first camera's, nothing tells.
void addClockDriftUnheard(const Shoot& shoot, const CameraAndCard& key, const HandledClips& unheard,
                          const ClockDrift& drift, SyncDoubts& doubts);

} // namespace orvane
