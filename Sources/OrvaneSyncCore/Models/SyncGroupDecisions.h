#pragma once

#include "OrvaneSyncCore/Models/SyncGroup.h"

namespace orvane {

/// Whether all stored fields of both are equal. The identifiers of their matches are not compared: matching
/// again gives the same recordings new ones.
bool haveSameContents(const SyncGroup& a, const SyncGroup& b);
/// The same for the fields on which the clips' doubts and names depend; the list of fields says which these
/// are.
bool haveSameDoubtInputs(const SyncGroup& a, const SyncGroup& b);
bool haveSameNameInputs(const SyncGroup& a, const SyncGroup& b);

/// Whether something about the clip was decided by hand and would be lost with the clip. A rate set by hand
/// and a removed recording are not detected: they look like results of the matcher.
bool holdsDecisions(const SyncGroup& group);
/// The same without the clap point in the sound, which is also found automatically when a clip is opened.
bool holdsDecisionsBesideClap(const SyncGroup& group);

/// Whether the clip is locked and its sound lies elsewhere by now than when it was.
bool isMovedSinceLock(const SyncGroup& group);

} // namespace orvane
