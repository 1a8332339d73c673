#pragma once

#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"

#include <set>

namespace orvane {

/// The tracks of a clip, from 1, that are played as long as the editor has chosen none: those of the blocks,
/// otherwise the best one, otherwise all. `result`: null if the clip was not analysed. Pure; any thread.
std::set<int> tracksHeardWithoutChoice(const SyncGroup& group, const SmartAudioResult* result);

/// The tracks that are switched on, by the editor or by the analysis.
std::set<int> activeTracks(const SyncGroup& group, const SmartAudioResult* result);

} // namespace orvane
