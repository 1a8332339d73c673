#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"

#include <stop_token>
#include <vector>

namespace orvane {

/// The start of a file that does not state one, derived from another file of its take. Pure; any thread.
namespace TakeStarts {

/// For recorders that write one file per channel and record linear timecode on one of them: gives each
/// recording without a start that of another file of its take. That file is in the same folder, has the same
/// sample rate and length, and a name that differs only in a word for the channel. Numbers alone may count
/// parts, which a recorder makes equally long. If there are several such files, the first one counts.
void share(std::vector<MediaAsset>& recordings, const std::stop_token& stop = {});

/// A part that begins at midnight counts from 0, as do the files of recorders that do not know the time. It
/// gets its start if a part of the day before, in the same folder, ends at that midnight.
void continueAtMidnight(std::vector<MediaAsset>& recordings, const std::stop_token& stop = {});

} // namespace TakeStarts
} // namespace orvane
