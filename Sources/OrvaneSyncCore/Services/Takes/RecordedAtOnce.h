#pragma once

#include "OrvaneSyncCore/Models/SyncGroup.h"

#include <cstddef>
#include <vector>

namespace orvane {

/// By number in its matches, the recordings that a clip has beside its first one although the first one's
/// recorder, in the same folder, made them and can't have run twice at one time: takes of another day, or of
/// the other one of two equal hours. Pure; any thread.
std::vector<std::size_t> ofOtherMoments(const SyncGroup& group);
/// Whether the clips' first recordings tell that they were not filmed at one moment, although timecode begins
/// the picture of `b` `distanceSeconds` after that of `a`: one clip has the other's beside its own, or both,
/// where they lie under their pictures, would be two takes of one recorder at one time.
bool areOfOtherMoments(const SyncGroup& a, const SyncGroup& b, double distanceSeconds);

} // namespace orvane
