#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace orvane {

/// When a clip began by the clock of the recording in which its camera's sound was heard.
struct HeardStart {
    const Shoot::Clip* clip;
    double seconds; ///< since 1970, as dates are
};

/// What the clips of a folder that were heard say of its dates.
struct HeardDates {
    std::ptrdiff_t clips = 0; ///< that were heard, and have a date
    /// Seconds, to be added to the dates; absent where these do not agree.
    std::optional<double> correction = {};
    bool areOfEnds = false; ///< the dates are those of the last pictures

    static HeardDates of(const std::vector<HeardStart>& heard);
    /// When another clip of the folder began, by its date; as `HeardStart`. With a correction alone.
    double startOf(const MediaAsset& video, double writtenSeconds) const;
};

/// Absent for a recording without a place and a day. `offsetSeconds`: by hand, by which the recording comes
/// to lie where it was heard.
std::optional<HeardStart> heardStart(const Shoot& shoot, const Shoot::Clip& clip, const UUID& recording,
                                     double offsetSeconds);

/// The recordings with a day, seconds since 1970, by their number.
Cover datedRecordings(const Shoot& shoot);

} // namespace orvane
