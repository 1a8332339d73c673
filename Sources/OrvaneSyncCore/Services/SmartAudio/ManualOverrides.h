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

} // namespace orvane::SmartAudioBlockRouter
