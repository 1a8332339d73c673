#pragma once

#include "OrvaneSyncCore/Services/Naming/SidebarOutline.h"

#include <vector>

namespace orvane {

/// The rows of `SidebarOutline::build` for these clips, in the order of the shoot. Clips are listed by file
/// name, one camera behind the other; so a row without a clip of the first camera, such as one without sound,
/// stands behind all of its clips. Here it stands where its own camera has it: behind the row of that
/// camera's clip before it, and by its start among the rows up to that camera's next one. The rows of a
/// camera that shares none with those before it stay together at the end. Pure; any thread.
std::vector<SidebarNode> inShootOrder(std::vector<SidebarNode> rows, const SyncGroupList& clips);

} // namespace orvane
