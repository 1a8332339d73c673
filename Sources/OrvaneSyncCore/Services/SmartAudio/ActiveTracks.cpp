#include "OrvaneSyncCore/Services/SmartAudio/ActiveTracks.h"

#include "OrvaneSyncCore/Services/Takes/Take.h"

#include <algorithm>

namespace orvane {

std::set<int> tracksHeardWithoutChoice(const SyncGroup& group, const SmartAudioResult* result) {
    std::set<int> tracks;
    if (result != nullptr) {
        for (const BlockDecision& block : result->blocks)
            if (block.activeTrack > 0) tracks.insert(block.activeTrack);
        if (tracks.empty() && result->bestTrackIndex) tracks.insert(*result->bestTrackIndex);
    }
    if (!tracks.empty()) return tracks;
    const int count = std::max(takeOf(group, 1).runningChannelCount(), 1);
    for (int track = 1; track <= count; ++track) tracks.insert(tracks.end(), track);
    return tracks;
}

std::set<int> activeTracks(const SyncGroup& group, const SmartAudioResult* result) {
    return group.manualActiveTracks.empty() ? tracksHeardWithoutChoice(group, result)
                                            : group.manualActiveTracks;
}

} // namespace orvane
