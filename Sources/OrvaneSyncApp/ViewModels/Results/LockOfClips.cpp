#include "OrvaneSyncApp/ViewModels/Results/LockOfClips.h"

#include "OrvaneSyncApp/ViewModels/Results/ClipInLists.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <utility>

namespace orvane {

LockOfClips LockOfClips::of(const ImportController& controller, const std::vector<UUID>& selected) {
    const auto& doubts = controller.doubts().byGroup;
    std::vector<UUID> settled, unsettled, locked;
    for (const UUID& id : selected) {
        const SyncGroup* clip = controller.work().syncGroups().find(id);
        if (clip == nullptr) continue;
        const ClipCertainty certainty = certaintyOf(*clip, doubts.contains(id));
        const bool isSettled = certainty == ClipCertainty::settled || certainty == ClipCertainty::silent;
        (clip->isLocked ? locked : isSettled ? settled : unsettled).push_back(id);
    }
    if (!settled.empty()) return {.clips = std::move(settled), .left = unsettled.size()};
    if (!locked.empty()) return {.clips = std::move(locked), .isLocking = false};
    return {.clips = std::move(unsettled), .areUnsettled = true};
}

std::string LockOfClips::text() const {
    std::string done = counted(clips.size(), "clip", "clips") + (isLocking ? " locked" : " unlocked");
    if (areUnsettled) done += ", in doubt or without sound";
    if (left > 0)
        done += "; " + std::to_string(left) +
                " in doubt or without sound left as they are: select only such clips to lock them";
    return done;
}

} // namespace orvane
