#pragma once

#include "OrvaneSyncCore/Models/WildTrack.h"

#include <memory>
#include <vector>

namespace orvane {

/// The wild tracks of a session as one process has them, and as it last knew them to be on the disk.
struct WildTracksChange {
    using Tracks = std::shared_ptr<const std::vector<WildTrack>>; ///< null: none
    Tracks tracks;
    Tracks known;

    bool isEmpty() const;
    /// Puts the change over what the disk says by now: which tracks there are is decided by the process whose
    /// clips stand, names and approvals by whoever changed them last.
    void apply(std::vector<WildTrack>& onDisk, bool areOtherClipsOnDisk) const;
};

} // namespace orvane
