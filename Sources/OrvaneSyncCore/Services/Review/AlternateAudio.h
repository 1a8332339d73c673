#pragma once

#include "OrvaneSyncCore/Models/SyncGroup.h"

#include <vector>

namespace orvane {

/// The lane of each recording of a clip except the first, from 0, in the order of the matches; the first has
/// a row of its own. Pure; any thread.
std::vector<int> alternateAudioLanes(const SyncGroup& group);

} // namespace orvane
