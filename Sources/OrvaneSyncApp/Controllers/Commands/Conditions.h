#pragma once

#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"

/// Conditions of the commands: for which clips one applies, and when it is enabled.
namespace orvane::commands {

inline bool isUnlocked(const SyncGroup& group) { return !group.isLocked; }
inline bool hasSound(const SyncGroup& group) { return !group.isMOS(); }
inline bool hasUnlockedSound(const SyncGroup& group) { return isUnlocked(group) && hasSound(group); }

inline bool hasClips(const CommandContext& context) {
    return !context.controller->work().syncGroups().empty();
}
/// False while a scan runs that will replace the clips.
inline bool isScanIdle(const CommandContext& context) {
    const ScanState state = context.controller->scan().scanState();
    return state == ScanState::idle || state == ScanState::done;
}
inline bool hasClipsWhileIdle(const CommandContext& context) {
    return hasClips(context) && isScanIdle(context);
}
/// For clips that are settled.
inline bool hasSoundWhileIdle(const CommandContext& context) {
    return context.controller->work().syncClipCount() > 0 && isScanIdle(context);
}

} // namespace orvane::commands
