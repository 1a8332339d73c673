#pragma once

#include "OrvaneSyncCore/Models/HeardLag.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Diagnosis/SyncDoubts.h"

#include <cstdint>
#include <string>
#include <vector>

namespace orvane {

/// Cameras whose clips have recordings by timecode alone: none of them could be compared with its sound. Only
/// timecode says that nothing is in doubt about these clips. Pure; any thread.
struct NotCompared {
    enum class Reason : std::uint8_t {
        noSound,  ///< of the camera
        offSpeed, ///< sound of another speed than the recordings
        tooShort,
        tooFew, ///< clips with sound of one recorder
        unlike  ///< nothing in it is like the recordings
    };
    /// The clips of one folder.
    struct Camera {
        std::string folder;
        int clips = 0;
        Reason reason = Reason::noSound;
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
