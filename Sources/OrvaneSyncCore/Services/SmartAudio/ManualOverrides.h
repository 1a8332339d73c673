#pragma once

#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"

#include <string_view>
#include <vector>

namespace orvane::SmartAudioBlockRouter {

/// The beginning of the reason of every manual range, by which the block strip recognises them.
inline constexpr std::string_view manualOverrideReason = "manual override";

/// Replaces blocks by the editor's ranges, whichever way the blocks were routed. The ranges are not changed,
/// even if they overlap; blocks are shortened. The result is in ascending order of starts, without remainders
/// that have no track. A range whose times are not finite is ignored.
std::vector<BlockDecision> applyOverrides(std::vector<BlockDecision> blocks,
                                          std::vector<BlockOverride> overrides);

/// The clip's ranges converted from clip time to take time, in which blocks are: minus the offset of the take
/// and the manual offset. Parts outside the recording are cut off.
std::vector<BlockOverride> overridesInTakeTime(const SyncGroup& group);

} // namespace orvane::SmartAudioBlockRouter
