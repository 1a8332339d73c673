#pragma once

#include "OrvaneSyncCore/Services/Export/ExportSettings.h"

#include <optional>
#include <string>

namespace orvane {

/// What the export sheet tells before anything is exported. Same rules as the export; clips that are excluded
/// do not count. Pure; any thread.
namespace ExportPreview {

/// "Scene 12" or "Scenes 12-14", from the scenes of the clips; nothing without a scene.
std::optional<std::string> suggestedEventName(const SyncGroupList& groups);

/// How many events the clips fall into when events are split by scene.
int projectedEventCount(const SyncGroupList& groups, const ExportSettings& settings);

/// What an export of these clips puts into the document.
struct Forecast {
    int withSound = 0, withoutSound = 0; ///< clips in events
    int multicams = 0;
};
Forecast forecast(const SyncGroupList& groups, const ExportSettings& settings);

struct SmartAudioCoverage {
    int unanalyzed = 0;   ///< clips with sound of which no analysis has heard anything
    int chosenBefore = 0; ///< those of them whose channels are chosen all the same
    /// Nothing when all clips are analysed.
    std::optional<std::string> text() const;
    /// What the document has of those that are not; nothing without a choice.
    std::optional<std::string> choiceText() const;
};
SmartAudioCoverage smartAudioCoverage(const SyncGroupList& groups,
                                      const SmartAudioResults& smartAudioResults);

} // namespace ExportPreview
} // namespace orvane
