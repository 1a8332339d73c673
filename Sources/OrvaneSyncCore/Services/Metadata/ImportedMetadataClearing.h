#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"

namespace orvane {

/// Removes imported metadata from clips. Names and sensor rates that were stored with it stay. Pure functions
/// of their arguments; any thread.
namespace ImportedMetadataClearing {

/// Returns whether there was anything to remove.
bool clearALEMetadata(SyncGroup& group);
bool clearLockitMetadata(SyncGroup& group);
/// Returns the number of clips that had anything to remove.
int clearALEMetadataForAllClips(SyncGroupList& groups);
int clearLockitMetadataForAllClips(SyncGroupList& groups);

} // namespace ImportedMetadataClearing
} // namespace orvane
