#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Naming/GroupNaming.h"

#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// One row of the clip list: a clip, or the parent row for the cameras of a take.
struct SidebarNode {
    std::string id;
    std::string label;
    SyncGroupList::Element group; ///< null in a parent row
    std::vector<SidebarNode> children;
    bool isMulticam = false;
};

/// The clip list of the sidebar. Pure; any thread.
namespace SidebarOutline {

/// Clips with the same name are below a parent row, in the order of their camera letters; rows are in the
/// order in which their names first occur. Clips that are excluded from multicam have rows of their own.
std::vector<SidebarNode> build(const SyncGroupList& groups, GroupNaming::Source source,
                               const std::optional<std::string>& customPattern);

} // namespace SidebarOutline
} // namespace orvane
