#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncCore/Services/Review/CardSuggestion.h"

#include <optional>
#include <set>
#include <string>

namespace orvane::commands {

/// `activeCardSuggestion` with the recordings of the open work. Interface thread.
std::optional<CardSuggestion> cardSuggestion(const ImportController& controller, const UUID& groupID,
                                             const std::set<std::string>& dismissedKeys = {});
/// Attaches the recordings to the clips and moves them there, as one undo step. Clips that have got sound or
/// a decision in the meantime are left as they are. Interface thread.
void giveSound(ImportController& controller, const std::vector<CardSuggestion::Clip>& clips);
/// `giveSound` for the clip in view, or for all clips of the suggestion.
void applyCardSuggestion(ImportController& controller, const CardSuggestion& suggestion, bool isForAllClips);

} // namespace orvane::commands
