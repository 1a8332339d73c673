#pragma once

#include "OrvaneSyncCore/Models/OrvaneSyncProject.h"

#include <optional>

namespace orvane {

/// The open project file.
struct ProjectFileState {
    std::optional<FileURL> currentURL;
    bool hasUnsavedChanges = false;
    /// A project that was opened while its media could not be scanned: its edits wait for the next scan, and
    /// a save before that keeps them.
    std::optional<OrvaneSyncProject> unapplied;
};

} // namespace orvane
