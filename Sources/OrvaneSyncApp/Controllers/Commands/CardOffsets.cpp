#include "OrvaneSyncApp/Controllers/Commands/CardOffsets.h"

#include "OrvaneSyncApp/Controllers/UndoSteps.h"

namespace orvane::commands {

std::optional<CardSuggestion> cardSuggestion(const ImportController& controller, const UUID& groupID,
                                             const std::set<std::string>& dismissedKeys) {
    const SyncGroup* group = controller.work().syncGroups().find(groupID);
    if (group == nullptr || !group->isMOS()) return std::nullopt;
    const WorkFiles files = controller.recordings().workFiles();
    return activeCardSuggestion(*group, files.groups, files.audioPool(), controller.work().matchRules(),
                                dismissedKeys);
}

namespace {

void attach(ImportController& controller, const CardSuggestion::Clip& clip) {
    const SyncGroupList& groups = controller.work().syncGroups();
    const SyncGroup* group = groups.find(clip.groupID);
    if (group == nullptr || !lacksSound(*group)) return;
    for (const auto& file : clip.files) controller.recordings().attachAudioToGroup(clip.groupID, *file);
    group = groups.find(clip.groupID);
    controller.clips().adjustAudioOffset(clip.groupID, clip.startSeconds - group->manualAudioOffsetSeconds -
                                                           group->audioMatches.front().syncOffsetSeconds);
}

} // namespace

void giveSound(ImportController& controller, const std::vector<CardSuggestion::Clip>& clips) {
    if (clips.empty()) return;
    controller.withUndo(undoSteps::applySuggestions, [&] {
        for (const CardSuggestion::Clip& clip : clips) attach(controller, clip);
    });
}

void applyCardSuggestion(ImportController& controller, const CardSuggestion& suggestion, bool isForAllClips) {
    giveSound(controller, isForAllClips ? suggestion.clips : std::vector{suggestion.clips.front()});
}

} // namespace orvane::commands
