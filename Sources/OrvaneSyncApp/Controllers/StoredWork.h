#pragma once

#include "OrvaneSyncCore/Models/FileURL.h"
#include "OrvaneSyncCore/Models/ScanScope.h"
#include "OrvaneSyncCore/Models/SourceCorrections.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Models/WildTrack.h"

#include <optional>
#include <vector>

namespace orvane {

/// Work from a file, which replaces all that was open.
struct StoredWork {
    std::optional<FileURL> videoFolderURL;
    std::optional<FileURL> audioFolderURL;
    SyncGroupList syncGroups;
    std::vector<WildTrack> wildTracks = {}; ///< those that a clip uses are dropped
    ScanScope scanScope{};
    SourceCorrections sourceCorrections = {};
    std::optional<SourceCorrections> matchedBy = {}; ///< absent: by the corrections
};

} // namespace orvane
