#pragma once

#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"

/// For which clips a command is there, and when.
namespace orvane::commands {

inline bool isUnlocked(const SyncGroup& group) { return !group.isLocked; }
inline bool hasSound(const SyncGroup& group) { return !group.isMOS(); }
inline bool hasUnlockedSound(const SyncGroup& group) { return isUnlocked(group) && hasSound(group); }

inline bool hasClips(const CommandContext& context) {
    return !context.controller->work().syncGroups().empty();
}

} // namespace orvane::commands
