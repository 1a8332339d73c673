#include "OrvaneSyncCore/Services/Diagnosis/ClipInDoubt.h"

#include "Platform/Stop.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace orvane {

ClipInDoubt::ClipInDoubt(const Shoot& theShoot, const Shoot::Clip& theClip)
    : shoot(theShoot), clip(theClip), group(*theClip.group), name(theShoot.nameOf(theClip.group->video)),
      take(takeOf(*theClip.group, assumedChannels)) {}

void ClipInDoubt::add(SyncDoubt::Kind kind, std::string message, DoubtCure cure, std::string reason) {
    doubts.push_back({kind, std::move(message), std::move(cure), {}, std::move(reason)});
}

void ClipInDoubt::addOf(SyncDoubt::Kind kind, const std::string& about, DoubtCure cure) {
    add(kind, name + " " + about, std::move(cure), about);
}

void addFromEachClip(SyncDoubts& doubts, const Shoot& shoot,
                     const std::function<std::vector<SyncDoubt>(const Shoot::Clip& clip)>& doubtsOf) {
    platform::StopCheck check(shoot.stop);
    for (const Shoot::Clip& clip : shoot.clips) {
        check();
        if (clip.group->isExcludedFromExport) continue;
        auto own = doubtsOf(clip);
        if (!own.empty()) std::ranges::move(own, std::back_inserter(doubts.byGroup[clip.group->id]));
    }
}

} // namespace orvane
