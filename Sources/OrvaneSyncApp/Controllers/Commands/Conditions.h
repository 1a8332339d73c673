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
/// No scan is on its way, whose clips take the place of those that there are.
inline bool isAtRest(const CommandContext& context) {
    const ScanState state = context.controller->scan().scanState();
    return state == ScanState::idle || state == ScanState::done;
}
inline bool hasClipsAtRest(const CommandContext& context) { return hasClips(context) && isAtRest(context); }
/// Of clips that are settled.
inline bool hasSoundAtRest(const CommandContext& context) {
    return context.controller->work().syncClipCount() > 0 && isAtRest(context);
}

} // namespace orvane::commands
