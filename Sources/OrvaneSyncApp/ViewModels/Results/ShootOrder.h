#pragma once

#include "OrvaneSyncCore/Models/SyncGroup.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"

#include <cstddef>
#include <vector>

namespace orvane {

/// The clips of one row of a list, at least one; the first represents the row.
using ClipsOfRow = std::vector<const SyncGroup*>;

/// The order of such rows, by their numbers, that follows the shoot. Each clip of the list is in one row. The
/// list is sorted by file name, one camera after the other, so a row without a clip of the first camera, such
/// as one without sound, would come after all clips of that camera. This function places it after the
/// previous row of its own camera and, by its start, among the rows before that camera's next one. The rows
/// of a camera that shares no row with the cameras before it stay together at the end. Pure function; any
/// thread.
std::vector<std::size_t> shootOrder(const std::vector<ClipsOfRow>& rows, const SyncGroupList& clips);

} // namespace orvane
