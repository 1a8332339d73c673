#include "OrvaneSyncApp/Controllers/ImportController.h"

#include "OrvaneSyncCore/Services/Takes/Take.h"

#include <algorithm>
#include <utility>

namespace orvane {

namespace {

/// Channels of all recordings of a clip; one of an unknown count has one.
int channelTotal(const SyncGroup& group) { return takeOf(group, 1).runningChannelCount(); }

std::set<int> tracksUpTo(int count) {
    std::set<int> tracks;
    for (int track = 1; track <= count; ++track) tracks.insert(tracks.end(), track);
    return tracks;
}

void toggle(std::set<int>& tracks, int track) {
    if (tracks.erase(track) == 0) tracks.insert(track);
}

} // namespace

/// A change of a clip that its analysis depends on. The id is a copy: the caller may have it from the clip
/// that is replaced.
platform::Task ImportController::editTracks(UUID groupID, const std::function<void(SyncGroup&)>& change) {
    assertOnMainThread();
    if (!syncGroups_.update(groupID, change)) return platform::Task::ended();
    notify(ImportField::syncGroups);
    return reanalyseIfKnown(groupID);
}

/// What the editor sees switched on while nothing was chosen by hand.
std::set<int> ImportController::visibleActiveTracks(const SyncGroup& group) const {
    const auto found = smartAudio_.results.find(group.id);
    if (found != smartAudio_.results.end()) {
        std::set<int> tracks;
        for (const BlockDecision& block : found->second.blocks)
            if (block.activeTrack > 0) tracks.insert(block.activeTrack);
        if (tracks.empty() && found->second.bestTrackIndex) tracks.insert(*found->second.bestTrackIndex);
        if (!tracks.empty()) return tracks;
    }
    return tracksUpTo(std::max(channelTotal(group), 1));
}

platform::Task ImportController::toggleTrackActive(const UUID& groupID, int trackIndex) {
    return editTracks(groupID, [&](SyncGroup& group) {
        if (group.manualActiveTracks.empty()) group.manualActiveTracks = visibleActiveTracks(group);
        toggle(group.manualActiveTracks, trackIndex);
        group.tracksManuallyEdited = true;
    });
}

platform::Task ImportController::soloTrackActive(const UUID& groupID, int trackIndex) {
    return editTracks(groupID, [&](SyncGroup& group) {
        group.manualActiveTracks = {trackIndex};
        group.tracksManuallyEdited = true;
    });
}

platform::Task ImportController::toggleAlgorithmInclusion(const UUID& groupID, int trackIndex) {
    return editTracks(groupID, [&](SyncGroup& group) { toggle(group.algorithmExcludedTracks, trackIndex); });
}

platform::Task ImportController::soloAlgorithmInclusion(const UUID& groupID, int trackIndex) {
    assertOnMainThread();
    const SyncGroup* group = syncGroups_.find(groupID);
    const int total = group == nullptr ? 0 : channelTotal(*group);
    if (total < 1) return platform::Task::ended();
    return editTracks(groupID, [&](SyncGroup& own) {
        own.algorithmExcludedTracks = tracksUpTo(total);
        own.algorithmExcludedTracks.erase(trackIndex);
    });
}

} // namespace orvane
