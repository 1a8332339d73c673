#pragma once

#include "OrvaneSyncCore/Models/SyncGroup.h"

/// For which clips a command is there.
namespace orvane::commands {

inline bool isUnlocked(const SyncGroup& group) { return !group.isLocked; }
inline bool hasSound(const SyncGroup& group) { return !group.isMOS(); }
inline bool hasUnlockedSound(const SyncGroup& group) { return isUnlocked(group) && hasSound(group); }

} // namespace orvane::commands
