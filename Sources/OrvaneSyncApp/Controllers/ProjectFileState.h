#pragma once

#include "OrvaneSyncCore/Models/OrvaneSyncProject.h"

#include <optional>
#include <vector>

namespace orvane {

/// The open project file.
struct ProjectFileState {
    std::optional<FileURL> currentURL;
    bool hasUnsavedChanges = false;
    /// The opened project with those entries whose clips no scan has found yet: a folder was gone, or a card
    /// was not in. They wait for a scan that finds the clips, and every save keeps them. Absent when none
    /// waits.
    std::optional<OrvaneSyncProject> unapplied;
    /// Clips, by their video, whose choice of tracks was left out: its numbers count the channels of
    /// recordings that the scan has not found.
    std::vector<FileURL> tracksLeftOut;
};

} // namespace orvane
