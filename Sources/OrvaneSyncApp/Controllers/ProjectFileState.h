#pragma once

#include "OrvaneSyncCore/Models/OrvaneSyncProject.h"

#include <optional>

namespace orvane {

/// The open project file.
struct ProjectFileState {
    std::optional<FileURL> currentURL;
    bool hasUnsavedChanges = false;
    /// The opened project with those entries whose clips no scan has found yet: a folder was gone, or a card
    /// was not in. They wait for a scan that finds the clips, and every save keeps them. Absent when none
    /// waits.
    std::optional<OrvaneSyncProject> unapplied;
};

} // namespace orvane
