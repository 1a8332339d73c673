#pragma once

#include "OrvaneSyncCore/Models/FileURL.h"
#include "OrvaneSyncCore/Models/OrvaneSyncProject.h"
#include "OrvaneSyncCore/Models/ScanModels.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"

#include <string_view>
#include <unordered_map>
#include <vector>

namespace orvane {

// Decisions about camera files that a scan left out as copies (`CameraCopies`): they apply to the file that
// is used. If several of these files have decisions, those of a locked clip come first, then those of a clip
// with any decision, then those of the file that is used. A project stores no locks. Pure functions, any
// thread.

/// The clips whose decisions apply, by the path of the file that is used. Valid as long as the arguments.
std::unordered_map<std::string_view, const SyncGroup*> clipsByUsedFile(const SyncGroupList& clips,
                                                                       const std::vector<CameraCopy>& copies);

/// The entries with the paths of the files that are used, one for each of these. Appends to `notApplied` the
/// files whose entries are dropped although they have decisions that the remaining entry does not have.
std::vector<PersistedGroup> entriesOfUsedFiles(std::vector<PersistedGroup> entries,
                                               const std::vector<CameraCopy>& copies,
                                               std::vector<FileURL>& notApplied);

} // namespace orvane
