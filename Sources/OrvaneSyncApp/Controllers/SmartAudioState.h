#pragma once

#include "OrvaneSyncCore/Models/FileURL.h"
#include "OrvaneSyncCore/Models/UUID.h"
#include "OrvaneSyncCore/Services/Export/ExportSettings.h"

#include <string>
#include <string_view>
#include <unordered_map>

namespace orvane {

/// How far an analysis is. Empty while none runs.
struct SmartAudioProgress {
    std::string phase;
    int current = 0;     ///< the clip that is heard, from 1
    int total = 0;       ///< clips of the run
    double fraction = 0; ///< of the sound of the whole run, 0 to 1

    bool operator==(const SmartAudioProgress&) const = default;
};

/// What Smart Audio knows of the clips, by group. Lives in memory only.
struct SmartAudioState {
    /// The latest analysis of each clip, with the editor's ranges laid over its blocks.
    ExportSettings::SmartAudioResults results;
    std::unordered_map<UUID, FileURL> viProcessedURLs; ///< previews of Voice Isolation
    std::unordered_map<UUID, FileURL> mixdownURLs;     ///< the blocks of a clip, rendered
    std::unordered_map<UUID, int> soloMonitorTracks;   ///< the track that the player plays alone
    std::unordered_map<UUID, FileURL> soloMonitorURLs; ///< that track, rendered
    bool isAnalyzing = false;
    SmartAudioProgress progress;
};

/// What undoing a change of tracks is called, by the operations of the controller.
namespace trackSteps {
inline constexpr std::string_view toggleTrackActive = "Toggle Audio Track";
inline constexpr std::string_view soloTrackActive = toggleTrackActive;
inline constexpr std::string_view toggleAlgorithmInclusion = "Toggle Algo Inclusion";
inline constexpr std::string_view soloAlgorithmInclusion = toggleAlgorithmInclusion;
} // namespace trackSteps

} // namespace orvane
