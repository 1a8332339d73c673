#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/HandledClips.h"
#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"

#include <cstddef>
#include <map>
#include <optional>
#include <vector>

namespace orvane {

/// Consecutive clips of a camera whose distance to their sound differs from that of the clips before and
/// after them: a clock was set between them, or lost its time.
struct MovedPart {
    double seconds = 0;       ///< to be added to the recordings
    std::ptrdiff_t count = 0; ///< clips in which this was heard
    bool isElsewhere = false; ///< heard in other recordings than those under the clips
    /// In the order of their starts: the first recording that was heard at this distance, and the first after
    /// these at another one; absent at the beginning and the end of the card.
    std::optional<std::size_t> first = {}, behind = {};
    std::vector<const Shoot::Clip*> clips =
        {}; ///< includes clips between them that were not heard, in their order
};
/// Empty if all clips were heard at one distance, or if the distance changes so often that setting a clock
/// cannot be the reason.
std::vector<MovedPart> movedParts(const Shoot& shoot, const HandledClips& card);

/// Adds a doubt about the part's clips. The cure moves the recordings of that part only. If other cameras
/// have these recordings as well and did not hear the same, this camera's clock may have been set, and the
/// cure moves them under this camera's clips only. If the others heard them at another distance, it was this
/// camera's clock, and each clip gets a suggested move. `key`: one of `cards`.
void addMovedPart(const Shoot& shoot, const std::map<CameraAndCard, HandledClips>& cards,
                  const CameraAndCard& key, const MovedPart& part, SyncDoubts& doubts);

} // namespace orvane
