#pragma once

#include "OrvaneSyncCore/Models/SyncGroup.h"

namespace orvane {

/// Carries what was decided about channels over to the recordings that the clip has by now: the tracks that
/// are switched on or excluded and those of the ranges of blocks, which are stated by running numbers. These
/// move when a file joins or leaves the take; a range keeps its place, which is that in the clip. What was
/// decided about a channel that is gone is dropped; a copy stands in for its original. `before`: the clip
/// with its former recordings. Where either has none, nothing changes. Pure; any thread.
void carryDecisions(SyncGroup& group, const SyncGroup& before);

} // namespace orvane
