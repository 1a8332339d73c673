#pragma once

#include "OrvaneSyncCore/Models/HeardLag.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Diagnosis/SyncDoubts.h"

#include <string>
#include <vector>

namespace orvane {

/// Cameras whose clips have recordings by timecode alone: none of them could be compared with its sound. Only
/// timecode says that nothing is in doubt about these clips. Pure; any thread.
struct NotCompared {
    /// The clips of one folder.
    struct Camera {
        std::string folder;
        int clips = 0;
        /// They have sound of the camera. It is too short, in too few clips, or unlike the recordings.
        bool hasSound = false;
        bool operator==(const Camera&) const = default;
    };
    std::vector<Camera> cameras; ///< in the order of their folders

    bool isEmpty() const { return cameras.empty(); }
    bool operator==(const NotCompared&) const = default;
    /// `heard`: the result of the comparison; null: none was made. Clips that are in doubt, and those that
    /// the editor locked, moved or left out, are not counted.
    static NotCompared of(const SyncGroupList& groups, const HeardSound* heard, const SyncDoubts& doubts);
    /// Sentences on lines of their own; empty if there are none.
    std::string text() const;
};

JSON toJSON(const NotCompared& notCompared);

} // namespace orvane
