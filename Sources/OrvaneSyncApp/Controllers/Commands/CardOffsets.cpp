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

void apply(ImportController& controller, const CardSuggestion::Clip& clip) {
    for (const auto& file : clip.files) controller.recordings().attachAudioToGroup(clip.groupID, *file);
    const SyncGroup& group = *controller.work().syncGroups().find(clip.groupID);
    controller.clips().adjustAudioOffset(clip.groupID, clip.startSeconds - group.manualAudioOffsetSeconds -
                                                           group.audioMatches.front().syncOffsetSeconds);
}

} // namespace

void applyCardSuggestion(ImportController& controller, const CardSuggestion& suggestion, bool isForAllClips) {
    controller.withUndo(undoSteps::applySuggestions, [&] {
        for (const CardSuggestion::Clip& clip : suggestion.clips) {
            apply(controller, clip);
            if (!isForAllClips) return;
        }
    });
}

} // namespace orvane::commands
