#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"

#include <string>
#include <vector>

namespace orvane {

/// The clips that a list of results shows.
enum class FilterMode {
    all,
    matched, ///< the settled ones
    issues   ///< those that need a decision
};
SyncGroupList filtered(const SyncGroupList& groups, FilterMode mode);

/// Cameras that share one recording and are listed together.
struct SharedAudioBundle {
    std::string id; ///< identifies the shared recording
    SyncGroupList cams;
};

/// Identifies the bundle of a clip.
std::string sharedAudioBundleID(const SyncGroup& group);

/// Bundles in the order of their first clip, the clips of each in the order of the list. A clip without sound
/// or excluded from multicam has a bundle of its own.
std::vector<SharedAudioBundle> sharedAudioBundles(const SyncGroupList& groups);

} // namespace orvane
