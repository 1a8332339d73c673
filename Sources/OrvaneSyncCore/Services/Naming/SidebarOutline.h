#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Naming/GroupNaming.h"

#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// One row of the clip list: a clip, or the parent row of the cameras of one take.
struct SidebarNode {
    std::string id;
    std::string label;
    SyncGroupList::Element group; ///< null in a parent row
    std::vector<SidebarNode> children;
    bool isMulticam = false;
};

/// The clip list of the side bar. Pure; any thread.
namespace SidebarOutline {

/// Clips of one name stand below a parent row, in the order of their camera letters; the rows keep the order
/// in which their names first occur. Clips that are excluded from multicam stand alone.
std::vector<SidebarNode> build(const SyncGroupList& groups, GroupNaming::Source source,
                               const std::optional<std::string>& customPattern);

} // namespace SidebarOutline
} // namespace orvane
