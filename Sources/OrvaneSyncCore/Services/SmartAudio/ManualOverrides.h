#pragma once

#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"

#include <string_view>
#include <vector>

namespace orvane::SmartAudioBlockRouter {

/// The reason of every manual range begins so; the block strip knows them by it.
inline constexpr std::string_view manualOverrideReason = "manual override";

/// Lays the editor's ranges over a block list, whichever way it was routed. The ranges are kept as they are,
/// overlaps included; blocks give way. The result is by ascending start, without remainders that have no
/// track. A range without finite times is passed over.
std::vector<BlockDecision> applyOverrides(std::vector<BlockDecision> blocks,
                                          std::vector<BlockOverride> overrides);

/// The clip's ranges, which are stated in clip time, in take time, on which blocks lie: minus the offset of
/// the take and the manual one. What lies outside of the recording is cut off.
std::vector<BlockOverride> overridesInTakeTime(const SyncGroup& group);

} // namespace orvane::SmartAudioBlockRouter
