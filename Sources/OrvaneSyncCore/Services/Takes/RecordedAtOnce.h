#pragma once

#include "OrvaneSyncCore/Models/SyncGroup.h"

#include <cstddef>
#include <vector>

namespace orvane {

/// The recordings of a clip, by number of the match, that the recorder of the first one, in the same folder,
/// made as well, although it cannot run twice at one time: takes of another day, or of the other one of two
/// equal hours. Pure; any thread.
std::vector<std::size_t> ofOtherMoments(const SyncGroup& group);
/// Whether the clips' first recordings show that the clips were not filmed at one moment, although by
/// timecode the picture of `b` begins `distanceSeconds` after that of `a`. Either one clip has the other's
/// recording beside its own, or the two recordings, at their places under the pictures, would be two takes of
/// one recorder at one time.
bool areOfOtherMoments(const SyncGroup& a, const SyncGroup& b, double distanceSeconds);

} // namespace orvane
