#pragma once

#include "OrvaneSyncCore/Models/FileURL.h"
#include "OrvaneSyncCore/Models/SlateResult.h"
#include "OrvaneSyncCore/Models/SmartAudioResults.h"
#include "OrvaneSyncCore/Models/UUID.h"

#include <string>
#include <unordered_map>
#include <unordered_set>

namespace orvane {

/// How far an analysis is, of several the one that began first. Empty while none runs.
struct SmartAudioProgress {
    std::string phase;   ///< names the recording that is heard, by its file
    int current = 0;     ///< the clip that is heard, from 1
    int total = 0;       ///< clips of the run
    double fraction = 0; ///< of the sound of the whole run, 0 to 1

    bool operator==(const SmartAudioProgress&) const = default;
};

/// What Smart Audio knows of the clips, by group. Lives in memory only.
struct SmartAudioState {
    /// The latest analysis of each clip, with the editor's ranges laid over its blocks.
    SmartAudioResults results;
    /// Clips that an analysis passed over, as the editor keeps all their tracks out of it. They have no
    /// result.
    std::unordered_set<UUID> passedOver;
    std::unordered_map<UUID, FileURL> viProcessedURLs; ///< previews of Voice Isolation
    std::unordered_map<UUID, FileURL> mixdownURLs;     ///< the blocks of a clip, rendered
    std::unordered_map<UUID, int> soloMonitorTracks;   ///< the track that the player plays alone
    std::unordered_map<UUID, FileURL> soloMonitorURLs; ///< that track, rendered
    /// The latest search for a clapper board in each clip.
    std::unordered_map<UUID, SlateResult> slateResults;
    /// Of clips of which that search could not read a file, the file. A result from before it stays.
    std::unordered_map<UUID, FileURL> slatesUnread;
    bool isAnalyzing = false;
    SmartAudioProgress progress;
    SmartAudioProgress rendering; ///< of the sound file that is being rendered
};

} // namespace orvane
