#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"

// Whether files of several days lie together so that the time of day does not tell them apart.
#include <map>

namespace orvane {

/// Whether files of two days were made at the same hours. A night that passes midnight is no such case.
bool daysShareHours(const Shoot& shoot);
/// The same of clips alone, by the days of their headers too. Those may count another zone than the
/// recordings, but change their day at one time of day for all clips. Sound that lies under a part of its
/// clip may belong to the first or last clip of another day.
bool clipsShareHours(const Shoot& shoot);
/// Whether one date was given to recordings of several shoots: by the days that the recordings state
/// themselves, and by the clips for recordings that state none.
bool givesDateToSeveralShoots(const Shoot& shoot);
/// One recorder cannot have made two recordings at one time: such files are of several days.
bool undatedFilesCollide(const Shoot& shoot);
/// What the recorder of the clip's first recording can't have made beside it, with dates neither or both
/// (`areDated`). Recorders that roll together start and stop together, or keep folders of their own; the
/// latter alone counts where both files have dates.
const AudioMatch* collision(const Shoot::Clip& clip, bool areDated);
/// The same within one folder, whatever dates there are: one file begins while another one is recorded.
const AudioMatch* collisionInFolder(const Shoot::Clip& clip);
/// Clips that have one recording and lie at one time, although they are of one camera, each with the other:
/// its clock was set back between them by up to an hour, as at the end of summer time.
std::map<const Shoot::Clip*, const Shoot::Clip*> filmedAtOnce(const Shoot& shoot);

} // namespace orvane
