#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncApp/Controllers/WorkFiles.h"
#include "OrvaneSyncCore/Services/Review/CardSuggestion.h"

#include <optional>
#include <set>
#include <string>
#include <utility>

namespace orvane::commands {

/// A clip and the files of the open work at one moment. Finding the suggestion for the clip may match all
/// clips of its card, so it is done on another thread.
class CardQuestion {
  public:
    /// Absent if there is no such clip or it has sound. Interface thread.
    static std::optional<CardQuestion> of(const ImportController& controller, const UUID& groupID);
    /// `activeCardSuggestion` with the recordings of the work. Any thread.
    std::optional<CardSuggestion> answer(const std::set<std::string>& dismissedKeys = {}) const;

  private:
    CardQuestion(SyncGroupList::Element clip, WorkFiles files)
        : clip_(std::move(clip)), files_(std::move(files)) {}

    SyncGroupList::Element clip_;
    WorkFiles files_;
};

/// Attaches the recordings to the clips and moves them there, as one undo step. Clips that were locked, or
/// have got sound or a decision in the meantime, are left as they are. Interface thread.
void giveSound(ImportController& controller, const std::vector<CardSuggestion::Clip>& clips);
/// `giveSound` for the clip in view, or for all clips of the suggestion.
void applyCardSuggestion(ImportController& controller, const CardSuggestion& suggestion, bool isForAllClips);

} // namespace orvane::commands
