#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"

#include <cstddef>
#include <string>
#include <vector>

namespace orvane {

/// What the lock does to several clips at once: it locks those that are not locked; if there are none, it
/// unlocks all. Nobody has looked at the clips of a large selection, and a lock ends a doubt without a trace.
/// Clips in doubt or without sound are therefore locked only if the selection has no other clips.
struct LockOfClips {
    std::vector<UUID> clips; ///< those that change
    bool isLocking = true;
    std::size_t left = 0;      ///< clips in doubt or without sound that are not locked
    bool areUnsettled = false; ///< `clips` are in doubt or without sound

    static LockOfClips of(const ImportController& controller, const std::vector<UUID>& selected);
    /// What was done.
    std::string text() const;
};

} // namespace orvane
