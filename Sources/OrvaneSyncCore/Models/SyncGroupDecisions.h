#pragma once

#include "OrvaneSyncCore/Models/SyncGroup.h"

namespace orvane {

/// All that is stored of both is the same. The identifiers of their matches do not count: matching again
/// makes new ones for the same recordings.
bool haveSameContents(const SyncGroup& a, const SyncGroup& b);
/// The same of those fields on which the doubts about the clips, and their names, depend: the list of fields
/// says which.
bool haveSameDoubtInputs(const SyncGroup& a, const SyncGroup& b);
bool haveSameNameInputs(const SyncGroup& a, const SyncGroup& b);

/// Something about the clip was decided by hand and would be lost with it. A rate by hand and a recording
/// that was taken off look like what the matcher finds by itself, so they do not show here.
bool holdsDecisions(const SyncGroup& group);
/// The same without the clap point in the sound, which is also found where a clip is only opened.
bool holdsDecisionsBesideClap(const SyncGroup& group);

} // namespace orvane
