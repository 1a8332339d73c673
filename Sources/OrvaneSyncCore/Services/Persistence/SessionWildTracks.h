#pragma once

#include "OrvaneSyncCore/Models/WildTrack.h"

#include <memory>
#include <vector>

namespace orvane {

/// The wild tracks of a session in one process, and the ones that it last knew on the disk.
struct WildTracksChange {
    using Tracks = std::shared_ptr<const std::vector<WildTrack>>; ///< null: none
    Tracks tracks;
    Tracks known;

    bool isEmpty() const;
    /// Applies the change to what is on the disk now. The tracks are those of the process that wrote the
    /// clips; names and approvals are those of the latest change.
    void apply(std::vector<WildTrack>& onDisk, bool areOtherClipsOnDisk) const;
};

} // namespace orvane
