#include "OrvaneSyncApp/ViewModels/Results/ClipDecisions.h"

#include "OrvaneSyncCore/Models/SyncGroupDecisions.h"

#include <algorithm>

namespace orvane {

ClipDecisions ClipDecisions::of(const ImportController& controller) {
    const bool isReportLoaded = controller.reports().aleFile() != nullptr; // applied to the next clips
    ClipDecisions found;
    for (const SyncGroup& clip : controller.work().syncGroups()) {
        if (clip.isLocked) ++found.locked;
        if (clip.isApproved) ++found.approved;
        if (!clip.isLocked && !clip.isApproved) {
            if (holdsDecisionsBesideClap(clip))
                ++found.otherwise;
            else if (clip.audioAnchorOffsetInAudioSeconds)
                ++found.claps;
        }
        if ((clip.hasALEMetadata() && !isReportLoaded) || clip.hasLockitMetadata()) ++found.described;
    }
    found.removed = static_cast<int>(controller.recordings().workFiles().removedVideos().size());
    return found;
}

ClipDecisions ClipDecisions::without(const ClipDecisions& later) const {
    const auto rest = [](int before, int after) { return std::max(before - after, 0); };
    return {rest(locked, later.locked), rest(approved, later.approved), rest(otherwise, later.otherwise),
            rest(claps, later.claps),   rest(removed, later.removed),   rest(described, later.described)};
}

} // namespace orvane
