#pragma once

#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"

#include <set>

namespace orvane {

/// The tracks of a clip, from 1, that are heard as long as the editor has chosen none: those of the blocks,
/// else the best one, else all. `result`: null where the clip was not analysed. Pure; any thread.
std::set<int> tracksHeardWithoutChoice(const SyncGroup& group, const SmartAudioResult* result);

/// The tracks that are switched on, chosen or not.
std::set<int> activeTracks(const SyncGroup& group, const SmartAudioResult* result);

} // namespace orvane
