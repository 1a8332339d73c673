#pragma once

#include "OrvaneSyncApp/Controllers/OpenWork.h"
#include "OrvaneSyncApp/Controllers/WorkFiles.h"

#include <algorithm>
#include <optional>
#include <stop_token>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace orvane {

// Matches clips again, and updates the recordings that no clip uses. Pure functions, any thread; those with a
// stop token throw Stopped.

/// The new matches of these clips: one group for each, with the clip's video and id. Empty for missing clips,
/// and without any recording.
std::vector<SyncGroup> rematched(const WorkFiles& files, const std::vector<UUID>& groupIDs, MatchRules rules,
                                 const std::stop_token& stop);

/// All clips matched again.
struct Resynced {
    SyncGroupList groups; ///< those that are unchanged are the same elements as before
    std::shared_ptr<const std::vector<WildTrack>> wildTracks;
    MatchedBy by;
    SyncGroupList matched; ///< the matches that were applied

    /// Applies the matches to clips that were edited meanwhile but have the same recordings. False if more
    /// than that has changed.
    bool follow(const WorkFiles& before, const WorkFiles& now);
};
/// Absent without any recording.
std::optional<Resynced> resynced(const WorkFiles& files, const SourceCorrections& corrections,
                                 const std::stop_token& stop);

/// The clips of a scan, with the decisions of the earlier clips that have the same camera file, also if it
/// has another path now, or a file that the scan left out as its copy: such a clip is the earlier clip, with
/// the recordings of the scan. A locked clip keeps its recordings. So does a clip whose first recording was
/// attached manually and is not matched by the scan. Other recordings that were attached manually stay beside
/// those of the scan, and those that were removed manually stay removed. A clip whose camera file the earlier
/// scan found, and that was not among the earlier clips, was removed by the editor and stays removed.
struct WithDecisions {
    SyncGroupList groups;
    std::shared_ptr<const std::vector<WildTrack>> wildTracks;
};
WithDecisions withDecisionsOf(const WorkFiles& earlier, const WorkFiles& scanned,
                              const std::stop_token& stop);

/// Gives the clip the recordings of `matched`, and adapts its decisions to them. If the editor chose another
/// recording than the first of `matched`, that one stays chosen if it is still there.
void copyMatches(SyncGroup& group, const SyncGroup& matched);

/// A recording that a clip uses is no wild track; a recording that was removed from clips becomes one when no
/// clip uses it. Absent if the wild tracks do not change.
template <class IsUsed>
std::optional<std::vector<WildTrack>> settledWildTracks(const std::vector<WildTrack>& before,
                                                        const std::vector<AudioMatch>& released,
                                                        const IsUsed& isUsed) {
    std::unordered_set<UUID> known;
    std::vector<WildTrack> tracks;
    for (const WildTrack& track : before)
        if (known.insert(track.id).second && !isUsed(track.id)) tracks.push_back(track);
    for (const AudioMatch& match : released)
        if (!isUsed(match.audio->id) && known.insert(match.audio->id).second)
            tracks.emplace_back(*match.audio);
    if (std::ranges::equal(tracks, before, {}, &WildTrack::id, &WildTrack::id)) return std::nullopt;
    return tracks;
}

} // namespace orvane
