#pragma once

#include "OrvaneSyncCore/Services/Export/ExportSettings.h"

#include <optional>
#include <string>

namespace orvane {

/// What the export sheet shows before the export. Uses the rules of the export; excluded clips do not count.
/// Pure; any thread.
namespace ExportPreview {

/// "Scene 12" or "Scenes 12-14", from the scenes of the clips; absent if no clip has a scene.
std::optional<std::string> suggestedEventName(const SyncGroupList& groups);

/// The number of events if events are split by scene.
int projectedEventCount(const SyncGroupList& groups, const ExportSettings& settings);

/// What an export of these clips would write into the document.
struct Forecast {
    int withSound = 0, withoutSound = 0; ///< clips in events
    int multicams = 0;
};
Forecast forecast(const SyncGroupList& groups, const ExportSettings& settings);

struct SmartAudioCoverage {
    int unanalyzed = 0;     ///< clips with sound for which no analysis has a result
    int chosenBefore = 0;   ///< those of them whose channels were chosen nevertheless
    int withRanges = 0;     ///< those of them that have ranges set by hand
    int analyzedRanges = 0; ///< analysed clips that have ranges set by hand
    /// Absent if all clips are analysed.
    std::optional<std::string> text() const;
    /// What the document gets for clips with chosen channels but without analysis; absent if there are none.
    std::optional<std::string> choiceText() const;
    /// That the document is without ranges that were set by hand; absent if there are none. Only volume
    /// keyframes have their times.
    std::optional<std::string> rangesText(bool hasVolumeKeyframes) const;
};
SmartAudioCoverage smartAudioCoverage(const SyncGroupList& groups,
                                      const SmartAudioResults& smartAudioResults);

} // namespace ExportPreview
} // namespace orvane
