#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"

namespace orvane {

/// Takes imported metadata off clips again. Stored names and sensor rates that came with it stay. Pure
/// functions of their arguments; any thread.
namespace ImportedMetadataClearing {

/// Whether there was something to clear.
bool clearALEMetadata(SyncGroup& group);
bool clearLockitMetadata(SyncGroup& group);
/// How many clips had something to clear.
int clearALEMetadataForAllClips(SyncGroupList& groups);
int clearLockitMetadataForAllClips(SyncGroupList& groups);

} // namespace ImportedMetadataClearing
} // namespace orvane
