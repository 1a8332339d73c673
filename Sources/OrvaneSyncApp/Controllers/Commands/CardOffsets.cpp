#include "OrvaneSyncApp/Controllers/Commands/CardOffsets.h"

#include "OrvaneSyncApp/Controllers/UndoSteps.h"

#include <memory>

namespace orvane::commands {

std::optional<CardQuestion> CardQuestion::of(const ImportController& controller, const UUID& groupID) {
    const SyncGroup* group = controller.work().syncGroups().find(groupID);
    if (group == nullptr || !group->isMOS()) return std::nullopt;
    return CardQuestion(std::make_shared<const SyncGroup>(*group), controller.recordings().workFiles());
}

std::optional<CardSuggestion> CardQuestion::answer(const std::set<std::string>& dismissedKeys) const {
    return activeCardSuggestion(*clip_, files_.groups, files_.audioPool(), files_.rules, dismissedKeys);
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
