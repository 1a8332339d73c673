#pragma once

#include "OrvaneSyncCore/Models/SyncGroup.h"

#include <cstddef>
#include <vector>

namespace orvane {

/// By number in its matches, the recordings that a clip has beside its first one although the first one's
/// recorder, in the same folder, made them and can't have run twice at one time: takes of another day, or of
/// the other one of two equal hours. Pure; any thread.
std::vector<std::size_t> ofOtherMoments(const SyncGroup& group);
/// Whether the clips' first recordings tell that they were not filmed at one moment, wherever timecode lays
/// them.
bool areOfOtherMoments(const SyncGroup& a, const SyncGroup& b);

} // namespace orvane
