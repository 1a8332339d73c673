#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"

#include <vector>

namespace orvane {

/// The start of a file that does not state it, by another file of its take. Pure; any thread.
namespace TakeStarts {

/// For recorders that write a file a channel and feed linear timecode into one of them: gives each recording
/// without a start that of a file of its take: one in the same folder, of the same sample rate and length,
/// whose name differs only in a word that names the channel. Numbers alone may count parts, which a recorder
/// makes equally long. Of several the first one counts.
void share(std::vector<MediaAsset>& recordings);

/// A part that begins at midnight counts from 0 as those of recorders do that know no time. It gets its start
/// where a part before it, in the same folder and of the day before, ends there.
void continueAtMidnight(std::vector<MediaAsset>& recordings);

} // namespace TakeStarts
} // namespace orvane
