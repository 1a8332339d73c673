#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/Cover.h"
#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace orvane {

/// The time at which a clip began, by the clock of the recording in which its camera's sound was heard.
struct HeardStart {
    const Shoot::Clip* clip;
    double seconds; ///< since 1970, as in dates
};

/// What the analysed clips of a folder show about the dates of its files.
struct HeardDates {
    std::ptrdiff_t clips = 0; ///< analysed clips that have a date
    /// Seconds, to be added to the dates; absent if the clips do not agree.
    std::optional<double> correction = {};
    bool areOfEnds = false; ///< the dates are the times of the last pictures

    static HeardDates of(const std::vector<HeardStart>& heard);
    /// The time at which another clip of the folder began, by its date; as in `HeardStart`. Requires a
    /// correction.
    double startOf(const MediaAsset& video, double writtenSeconds) const;
};

/// Absent for a recording without a place or a day. `offsetSeconds`: the manual offset that puts the
/// recording where it was heard.
std::optional<HeardStart> heardStart(const Shoot& shoot, const Shoot::Clip& clip, const UUID& recording,
                                     double offsetSeconds);

/// The recordings that have a day, in seconds since 1970, with their numbers.
Cover datedRecordings(const Shoot& shoot);

} // namespace orvane
