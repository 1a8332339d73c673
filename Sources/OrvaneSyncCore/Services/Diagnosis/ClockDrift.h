#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/HandledClips.h"
#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// The clock of a card that runs fast or slow compared with the cameras' clock, measured on clips over the
/// day. All values in seconds; times are those of the clips, with day and time of day on one axis.
struct ClockDrift {
    double perSecond = 0;
    double originSeconds = 0, atOrigin = 0;   ///< the mean time of the measured clips, and the offset there
    double firstSeconds = 0, lastSeconds = 0; ///< times of the first and last measured clip
    std::size_t count = 0;                    ///< number of measured clips

    /// The offset to add to the recordings under a clip that begins at this time.
    double offsetAt(double seconds) const { return atOrigin + perSecond * (seconds - originSeconds); }
};
/// The time of a measured clip, and the offset to add to its recording.
struct MeasuredOffset {
    double at, seconds;
};
/// Absent if the offsets are not on a line, or if they change too little to be measured.
std::optional<ClockDrift> clockDriftOf(std::vector<MeasuredOffset> heard);
std::optional<ClockDrift> clockDriftOf(const HandledClips& card);
/// Text after the offset of a clock, from which the measured clips differ: "; the clocks run apart by ...".
std::string runApartText(const ClockDrift& drift);

/// Adds a doubt for every clip of the card that was not moved by hand, each with its own offset.
void addClockDrift(const Shoot& shoot, const CameraAndCard& key, const HandledClips& card,
                   const ClockDrift& drift, SyncDoubts& doubts);
/// The same for the clips of another camera with sound of that card, of which nothing was heard. Nothing
/// shows whose clock is wrong: the recorder's or the first camera's.
void addClockDriftUnheard(const Shoot& shoot, const CameraAndCard& key, const HandledClips& unheard,
                          const ClockDrift& drift, SyncDoubts& doubts);

} // namespace orvane
