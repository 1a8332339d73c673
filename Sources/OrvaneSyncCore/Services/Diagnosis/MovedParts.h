#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/HandledClips.h"

#include <cstddef>
#include <map>
#include <optional>
#include <vector>

namespace orvane {

/// Clips of a camera whose sound a card has at another distance than that of those before and behind them:
/// its clock was set anew in between, or lost.
struct MovedPart {
    double seconds = 0;       ///< to be added to the recordings
    std::ptrdiff_t count = 0; ///< clips of which that was heard
    bool isElsewhere = false; ///< in other recordings than those under the clips
    /// In the order of their starts: the first recording that was heard so, and the first behind them that
    /// was not; absent for the beginning and the end of the card.
    std::optional<std::size_t> first = {}, behind = {};
    std::vector<const Shoot::Clip*> clips =
        {}; ///< with those between them that were not heard, in their order
};
/// Empty where all clips were heard at one distance, and where that changes so often that no clock was set.
std::vector<MovedPart> movedParts(const Shoot& shoot, const HandledClips& card);

/// Doubts the part's clips. Its cure moves the recordings of that part alone, and where other cameras have
/// them as well and did not hear the same, under these clips alone: it may be this camera that was set.
/// Where they heard them at another distance, it was, and each clip is to be moved by what is suggested.
/// `key`: one of `cards`.
void addMovedPart(const Shoot& shoot, const std::map<CameraAndCard, HandledClips>& cards,
                  const CameraAndCard& key, const MovedPart& part, SyncDoubts& doubts);

} // namespace orvane
