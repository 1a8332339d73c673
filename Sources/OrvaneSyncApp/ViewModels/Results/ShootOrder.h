#pragma once

#include "OrvaneSyncCore/Models/SyncGroup.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"

#include <cstddef>
#include <vector>

namespace orvane {

/// The clips of one row of a list, of which the first stands for the row; each has one at least.
using ClipsOfRow = std::vector<const SyncGroup*>;

/// In which order such rows follow the shoot, given by their numbers. Each clip of the list is in one row.
/// Clips are listed by file name, one camera behind the other; so a row without a clip of the first camera,
/// such as one without sound, stands behind all of its clips. Here it stands where its own camera has it:
/// behind the row of that camera's clip before it, and by its start among the rows up to that camera's next
/// one. The rows of a camera that shares none with those before it stay together at the end. Pure; any
/// thread.
std::vector<std::size_t> shootOrder(const std::vector<ClipsOfRow>& rows, const SyncGroupList& clips);

} // namespace orvane
