#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"

#include <string>
#include <vector>

namespace orvane {

/// Which clips a list of results shows.
enum class FilterMode {
    all,
    matched, ///< the settled ones
    issues   ///< those that wait for a decision
};
SyncGroupList filtered(const SyncGroupList& groups, FilterMode mode);

/// The cameras that share one recording, so that they stand together.
struct SharedAudioBundle {
    std::string id; ///< what they share
    SyncGroupList cams;
};

/// Bundles in the order of their first clip, and the clips of each in the order of the list. A clip without
/// sound, and one that is excluded from multicam, stands alone.
std::vector<SharedAudioBundle> sharedAudioBundles(const SyncGroupList& groups);

} // namespace orvane
