#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Naming/GroupNaming.h"

#include <optional>
#include <set>
#include <string>

namespace orvane {

/// Another camera of the take was moved relative to its sound: the same move is suggested for this one.
struct SiblingSuggestion {
    SyncGroupList::Element sibling;
    double offsetSeconds = 0; ///< the sibling's manual offset
    std::string dismissKey;   ///< changes when the sibling is moved again
    std::string folder = {};  ///< of the sibling's camera, if only the folder distinguishes it from this one

    /// The text of the banner, in frames of the player's rate.
    std::string text(double frameRate) const;
};

/// Uses the first sibling that was moved by a frame or more and whose offset differs from this clip's by a
/// frame or more, unless this clip would lose its sound by that offset. `frameRate` is the player's, frames
/// per second; absent if it is not above 0. Pure; any thread.
std::optional<SiblingSuggestion> activeSiblingSuggestion(const SyncGroup& group, const SyncGroupList& groups,
                                                         GroupNaming::Source source,
                                                         const std::optional<std::string>& customPattern,
                                                         double frameRate,
                                                         const std::set<std::string>& dismissedKeys);

/// Whole frames with their sign, such as "+3f"; below a millisecond "+0f".
std::string formatOffset(double seconds, double frameRate);

} // namespace orvane
