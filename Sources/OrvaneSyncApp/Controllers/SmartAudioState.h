#pragma once

#include "OrvaneSyncCore/Models/FileURL.h"
#include "OrvaneSyncCore/Models/SlateResult.h"
#include "OrvaneSyncCore/Models/SmartAudioResults.h"
#include "OrvaneSyncCore/Models/UUID.h"

#include <string>
#include <unordered_map>
#include <unordered_set>

namespace orvane {

/// The progress of an analysis; of several, the one that began first. Empty while none runs.
struct SmartAudioProgress {
    std::string phase;   ///< names the file of the recording that is read
    int current = 0;     ///< the clip that is analysed, from 1
    int total = 0;       ///< clips of the run
    double fraction = 0; ///< of the sound of the whole run, 0 to 1

    bool operator==(const SmartAudioProgress&) const = default;
};

/// The results of Smart Audio for the clips, by group. Sessions and projects do not hold them.
struct SmartAudioState {
    /// The latest analysis of each clip, with the editor's ranges applied to its blocks.
    SmartAudioResults results;
    /// Clips that an analysis passed over, because the editor excludes all their tracks. They have no result.
    std::unordered_set<UUID> passedOver;
    std::unordered_map<UUID, FileURL> viProcessedURLs; ///< previews of Voice Isolation
    std::unordered_map<UUID, FileURL> mixdownURLs;     ///< the blocks of a clip, rendered
    std::unordered_map<UUID, int> soloMonitorTracks;   ///< the track that the player plays alone
    std::unordered_map<UUID, FileURL> soloMonitorURLs; ///< that track, rendered
    /// The latest search for a clapper board in each clip.
    std::unordered_map<UUID, SlateResult> slateResults;
    /// For clips in which the latest search could not read a file: that file. An earlier result is kept.
    std::unordered_map<UUID, FileURL> slatesUnread;
    bool isAnalyzing = false;
    SmartAudioProgress progress;
    SmartAudioProgress rendering; ///< of the sound file that is being rendered
};

} // namespace orvane
