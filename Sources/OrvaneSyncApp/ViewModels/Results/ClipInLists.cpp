#include "OrvaneSyncApp/ViewModels/Results/ClipInLists.h"

#include "OrvaneSyncApp/ViewModels/Results/ClipTexts.h"
#include "OrvaneSyncCore/Services/Naming/GroupNaming.h"
#include "OrvaneSyncCore/Services/Takes/ClipRecordings.h"
#include "Platform/Text.h"

#include <utility>

namespace orvane {

ClipCertainty certaintyOf(const SyncGroup& group, bool hasDoubts) {
    using Certainty = ClipCertainty;
    switch (group.matchStatus.kind) {
    case MatchStatus::Kind::unmatched:
        return Certainty::missing;
    case MatchStatus::Kind::ambiguous:
        return Certainty::doubtful;
    case MatchStatus::Kind::mos:
        return Certainty::silent;
    default:
        break;
    }
    return hasDoubts ? Certainty::doubtful : Certainty::settled;
}

std::string searchedText(const SyncGroup& group, const std::string& name, const OpenWork& work) {
    const FileNames& files = work.fileNames();
    std::string text = name + "\n" + files.of(group.video);
    if (GroupNaming::manualName(group)) {
        const NamingRules rules = NamingRules::of(*work.environment.settings);
        text += "\n" + GroupNaming::baseName(group, rules.source, rules.pattern, rules.separator);
    }
    for (const AudioMatch& match : group.audioMatches) {
        text += "\n" + files.of(*match.audio);
        if (match.audio->ixmlData && match.audio->ixmlData->scene)
            text += "\n" + *match.audio->ixmlData->scene;
    }
    return text;
}

std::vector<RecordingCandidate> recordingCandidates(const OpenWork& work, const UUID& groupID) {
    const SyncGroup* group = work.syncGroups().find(groupID);
    if (group == nullptr || group->isLocked) return {};
    std::vector<RecordingCandidate> found;
    for (const auto& recording : recordingsOf(*group)) {
        const AudioMatch& first = group->audioMatches[recording.front()];
        std::string text = recordingText(*group, recording, work.fileNames());
        text += platform::text::formatted(", %.1f s of ", first.overlapDurationSeconds) +
                lengthText(group->video);
        found.push_back({first.id, std::move(text), found.empty()});
    }
    return found.size() > 1 ? found : std::vector<RecordingCandidate>();
}

} // namespace orvane
