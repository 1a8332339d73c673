#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"

#include <vector>

namespace orvane {

/// The start of a take whose recorder writes a file a channel and feeds linear timecode into one of them.
/// Pure; any thread.
namespace TakeStarts {

/// Gives each recording without a start that of a file of its take: one in the same folder, of the same
/// sample rate and length, whose name differs only in a word that names the channel. Numbers alone may count
/// parts, which a recorder makes equally long. Of several the first one counts.
void share(std::vector<MediaAsset>& recordings);

} // namespace TakeStarts
} // namespace orvane
