#include "OrvaneSyncCore/Services/Takes/ClipSound.h"

namespace orvane {

ClipSound::ClipSound(const SyncGroup& group) : offsetSeconds(group.manualAudioOffsetSeconds) {
    if (group.isMOS()) return;
    const Take laid = takeOf(group, assumedChannels);
    take.emplace(group, laid);
    offsetSeconds += laid.offsetSeconds;
    durationSeconds = laid.durationSeconds;
    primaryStartSeconds = laid.primaryStartSeconds;
}

} // namespace orvane
