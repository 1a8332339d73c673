#include "OrvaneSyncApp/Controllers/TrackEditing.h"

#include "OrvaneSyncCore/Services/SmartAudio/ActiveTracks.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

namespace orvane {

namespace {

/// The number of channels of all recordings of a clip; a recording with an unknown number counts as one.
int channelTotal(const SyncGroup& group) { return takeOf(group, 1).runningChannelCount(); }

std::set<int> tracksUpTo(int count) {
    std::set<int> tracks;
    for (int track = 1; track <= count; ++track) tracks.insert(tracks.end(), track);
    return tracks;
}

void toggle(std::set<int>& tracks, int track) {
    if (tracks.erase(track) == 0) tracks.insert(track);
}

constexpr double sameMomentSeconds = 0.000001;

void expectRange(const SyncGroup& group, double low, double high, int trackIndex) {
    const int channels = takeOf(group, assumedChannels).channelCount;
    if (channels == 0) throw OutOfRange("the clip has no sound");
    if (trackIndex < 1 || trackIndex > channels)
        throw OutOfRange("trackIndex: the clip's take has tracks 1 to " + std::to_string(channels));
    const auto& duration = group.video.durationSeconds;
    if (low < 0 || (duration && high > *duration + sameMomentSeconds))
        throw OutOfRange("the range must be within the clip" +
                         (duration ? platform::text::formatted(", which lasts %.3f s", *duration) : ""));
}

/// The overrides without the range from `low` to `high`; parts before and after it are kept.
std::vector<BlockOverride> cleared(const std::vector<BlockOverride>& overrides, double low, double high) {
    std::vector<BlockOverride> result;
    for (const BlockOverride& one : overrides) {
        if (one.endSeconds <= low || one.startSeconds >= high) {
            result.push_back(one);
            continue;
        }
        if (one.startSeconds < low) result.push_back({one.id, one.startSeconds, low, one.trackIndex});
        if (high < one.endSeconds) result.push_back({UUID::random(), high, one.endSeconds, one.trackIndex});
    }
    return result;
}

} // namespace

/// Changes something that the clip's analysis depends on. The id is a copy, because a reference could be into
/// the clip that is replaced.
platform::Task TrackEditing::editTracks(UUID groupID, const std::function<void(SyncGroup&)>& change) {
    work_.notices.assertOnMainThread();
    return work_.edit(groupID, change) ? smartAudio_.reanalyseIfKnown(groupID) : platform::Task::ended();
}

/// The tracks that are shown as active if the editor has not chosen any.
std::set<int> TrackEditing::visibleActiveTracks(const SyncGroup& group) const {
    const auto& results = smartAudio_.state().results;
    const auto found = results.find(group.id);
    return tracksHeardWithoutChoice(group, found == results.end() ? nullptr : &*found->second);
}

platform::Task TrackEditing::toggleTrackActive(const UUID& groupID, int trackIndex) {
    return editTracks(groupID, [&](SyncGroup& group) {
        if (group.manualActiveTracks.empty()) group.manualActiveTracks = visibleActiveTracks(group);
        toggle(group.manualActiveTracks, trackIndex);
        group.tracksManuallyEdited = true;
    });
}

platform::Task TrackEditing::soloTrackActive(const UUID& groupID, int trackIndex) {
    return editTracks(groupID, [&](SyncGroup& group) {
        group.manualActiveTracks = {trackIndex};
        group.tracksManuallyEdited = true;
    });
}

platform::Task TrackEditing::toggleAlgorithmInclusion(const UUID& groupID, int trackIndex) {
    return editTracks(groupID, [&](SyncGroup& group) { toggle(group.algorithmExcludedTracks, trackIndex); });
}

platform::Task TrackEditing::soloAlgorithmInclusion(const UUID& groupID, int trackIndex) {
    work_.notices.assertOnMainThread();
    const SyncGroup* group = work_.syncGroups().find(groupID);
    const int total = group == nullptr ? 0 : channelTotal(*group);
    if (total < 1) return platform::Task::ended();
    return editTracks(groupID, [&](SyncGroup& own) {
        own.algorithmExcludedTracks = tracksUpTo(total);
        own.algorithmExcludedTracks.erase(trackIndex);
    });
}

platform::Task TrackEditing::addBlockOverride(UUID groupID, double startSeconds, double endSeconds,
                                              int trackIndex, std::optional<UUID> inPlaceOf) {
    const auto [low, high] = std::minmax(startSeconds, endSeconds);
    if (!std::isfinite(low) || !std::isfinite(high) || high - low < shortestOverrideSeconds)
        return platform::Task::ended();
    if (const SyncGroup* group = work_.syncGroups().find(groupID)) expectRange(*group, low, high, trackIndex);
    const BlockOverride added{UUID::random(), low, high, trackIndex};
    const bool found = work_.edit(groupID, [&](SyncGroup& group) {
        auto& overrides = group.manualBlockOverrides;
        if (inPlaceOf)
            std::erase_if(overrides, [&](const BlockOverride& one) { return one.id == inPlaceOf; });
        overrides = cleared(overrides, added.startSeconds, added.endSeconds);
        overrides.push_back(added);
        std::ranges::stable_sort(overrides, {}, &BlockOverride::startSeconds);
    });
    return found ? smartAudio_.reanalyseIfKnown(groupID) : platform::Task::ended();
}

platform::Task TrackEditing::removeBlockOverride(UUID groupID, UUID overrideID) {
    const bool found = work_.edit(groupID, [&](SyncGroup& group) {
        std::erase_if(group.manualBlockOverrides,
                      [&](const BlockOverride& one) { return one.id == overrideID; });
    });
    return found ? smartAudio_.reanalyseIfKnown(groupID) : platform::Task::ended();
}

void TrackEditing::setMasterGain(UUID groupID, double gainDB, bool automatic) {
    if (!std::isfinite(gainDB)) return;
    if (gainDB < lowestGainDB || gainDB > highestGainDB)
        throw OutOfRange(platform::text::formatted("gainDB must be %g", lowestGainDB) +
                         platform::text::formatted(" to %g", highestGainDB));
    work_.edit(groupID, [&](SyncGroup& group) {
        group.masterGainDB = gainDB;
        group.masterGainAuto = automatic;
    });
}

void TrackEditing::resetMasterGain(UUID groupID) {
    work_.edit(groupID, [&](SyncGroup& group) {
        group.masterGainAuto = true;
        if (group.measuredLUFS)
            group.masterGainDB = automaticMasterGainDB(*group.measuredLUFS, *work_.environment.settings);
    });
}

} // namespace orvane
