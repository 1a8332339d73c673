#include "OrvaneSyncApp/ViewModels/Results/ClipDecisions.h"

#include "OrvaneSyncCore/Models/SyncGroupDecisions.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

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

RenamedClips RenamedClips::of(const WorkFiles& before, const WorkFiles& now, const NamingRules& rules) {
    const DisplayNames namesBefore = before.displayNames(rules), names = now.displayNames(rules);
    std::unordered_map<std::string_view, const std::string*> known;
    for (const SyncGroup& clip : before.groups) known.emplace(clip.video.url.path, &namesBefore.at(clip.id));
    RenamedClips renamed;
    for (const SyncGroup& clip : now.groups) {
        const auto earlier = known.find(clip.video.url.path);
        const std::string& name = names.at(clip.id);
        if (!clip.isLocked || earlier == known.end() || *earlier->second == name) continue;
        if (++renamed.count > 1) continue;
        renamed.before = *earlier->second;
        renamed.now = name;
    }
    return renamed;
}

std::string RenamedClips::text() const {
    if (count == 0) return "";
    const std::string names = "“" + before + "” to “" + now + "”";
    return count == 1
               ? "The name of a locked clip changed from " + names + "."
               : "The names of " + std::to_string(count) + " locked clips changed, such as " + names + ".";
}

} // namespace orvane
