#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"

// Whether files of several days are mixed, so that the time of day does not distinguish them.
#include <map>

namespace orvane {

/// Whether files of two days were made at the same hours. Not true for one night that passes midnight.
bool daysShareHours(const Shoot& shoot);
/// The same for clips only, also by the days of their headers. These may count another time zone than the
/// recordings, but then the day changes at one time of day for all clips. Sound that lies under a part of its
/// clip may belong to the first or last clip of another day.
bool clipsShareHours(const Shoot& shoot);
/// Whether one date was given to recordings of several shoots: by the days that the recordings state, and by
/// the clips for recordings that state none.
bool givesDateToSeveralShoots(const Shoot& shoot);
/// True if one recorder would have made two recordings at one time: such files are of several days.
bool undatedFilesCollide(const Shoot& shoot);
/// The same for recordings of one folder and date, whatever clips have them. A take may begin with sound that
/// the recorder kept from before its start, but then it follows the one that it overlaps.
bool datedFilesCollide(const Shoot& shoot);
/// A recording of the clip that the recorder of its first recording cannot have made at the same time. Both
/// have dates, or not both (`areDated`). Recorders that roll together start and stop together, or have
/// folders of their own; if both files have dates, only the folders count.
const AudioMatch* collision(const Shoot::Clip& clip, bool areDated);
/// The same within one folder, with or without dates: one file begins while another one is recorded.
const AudioMatch* collisionInFolder(const Shoot::Clip& clip);
/// Pairs of clips of one camera that have the same recording and lie at the same time, each mapped to the
/// other: the clock was set back between them by up to an hour, as at the end of summer time.
std::map<const Shoot::Clip*, const Shoot::Clip*> filmedAtOnce(const Shoot& shoot);

} // namespace orvane
