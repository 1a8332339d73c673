#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"
#include "OrvaneSyncCore/Utilities/Day.h"

#include <cmath>
#include <optional>
#include <vector>

namespace orvane {

/// A clip with the time of its own date, seconds since 1970 in the user's calendar.
struct WrittenClip {
    const Shoot::Clip* clip;
    double seconds;
    double secondOfDay() const { return std::fmod(seconds, secondsADay); }
    const SyncEngine::TCRange& range() const { return clip->place->range; }
};
/// Absent for a clip without a date or a place.
std::optional<WrittenClip> writtenOf(const Shoot::Clip& clip);

/// Whether timecode counts only while the camera runs: between two clips, more time passes by their dates
/// than by their timecode. If files were written again by a copy, their dates follow each other faster than
/// the clips did. `clips`: of one folder, in the order of their dates.
bool countsWhileRunning(const std::vector<WrittenClip>& clips);

} // namespace orvane
