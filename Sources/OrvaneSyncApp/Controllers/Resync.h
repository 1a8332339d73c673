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

// Matching clips again, and what follows from it for the recordings that no clip uses. Pure, any thread; what
// takes a stop token throws Stopped.

/// What these clips meet: a group each of the clip's video with that, under the clip's id. Nothing for clips
/// that are not there, and without any recording.
std::vector<SyncGroup> rematched(const WorkFiles& files, const std::vector<UUID>& groupIDs, MatchRules rules,
                                 const std::stop_token& stop);

/// All clips matched again.
struct Resynced {
    SyncGroupList groups; ///< those that say the same are the same elements as before
    std::shared_ptr<const std::vector<WildTrack>> wildTracks;
    MatchedBy by;
    SyncGroupList matched; ///< what was laid over them

    /// Lays it over clips that were edited meanwhile, with the recordings that they had. False where more has
    /// changed than that.
    bool follow(const WorkFiles& before, const WorkFiles& now);
};
/// Nothing without any recording.
std::optional<Resynced> resynced(const WorkFiles& files, const SourceCorrections& corrections,
                                 const std::stop_token& stop);

/// Gives the clip the recordings of `matched`, and its decisions what they stand for in these. Where the
/// editor chose another recording than `matched` has in front, that one stays chosen if it is still there.
void layMatches(SyncGroup& group, const SyncGroup& matched);

/// What a clip uses is no wild track; of what clips have given up, that which no clip uses any more is one.
/// Nothing where they are the same ones as before.
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
