#include "OrvaneSyncCore/Services/Takes/ClipSound.h"

namespace orvane {

ClipSound::ClipSound(const SyncGroup& group) : offsetSeconds(group.manualAudioOffsetSeconds) {
    if (group.isMOS()) return;
    const Take positioned = takeOf(group, assumedChannels);
    take.emplace(group, positioned);
    offsetSeconds += positioned.offsetSeconds;
    durationSeconds = positioned.durationSeconds;
    primaryStartSeconds = positioned.primaryStartSeconds;
}

} // namespace orvane
