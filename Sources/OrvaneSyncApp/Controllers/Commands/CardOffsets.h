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
/// Attaches the recordings to the clip in view, or to all clips of the suggestion, and moves them there.
/// Opens an undo step.
void applyCardSuggestion(ImportController& controller, const CardSuggestion& suggestion, bool isForAllClips);

} // namespace orvane::commands
