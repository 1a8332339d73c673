#pragma once

#include "OrvaneSyncCore/Models/FilePaths.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Matching/MatchRules.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace orvane {

/// The editor gave a clip a recording and moved it by hand: the clock of its card is wrong by as much. The
/// same is suggested for the clips of the card that have no sound.
struct CardSuggestion {
    struct Clip {
        UUID groupID;
        std::vector<Shared<MediaAsset>> files; ///< of the recording that meets the clip so
        double startSeconds = 0;               ///< of the first file, in clip time
    };
    SyncGroupList::Element moved;
    double offsetSeconds = 0; ///< its manual offset
    std::vector<Clip> clips;  ///< the first is the clip in view
    std::string dismissKey;   ///< of the card and the offset

    /// The text of the banner, in frames of the player's rate.
    std::string text(double frameRate, const FileNames& names) const;
};

/// Whether an offset of its card may give the clip a recording: it has none, and no decision.
bool lacksSound(const SyncGroup& group);
/// The recordings that these clips get if they are matched by these rules, with the first one that meets at
/// least half of the clip. Clips without one are left out. Pure; any thread.
std::vector<CardSuggestion::Clip> clipsMatchedAlone(const std::vector<const SyncGroup*>& clips,
                                                    const std::vector<MediaAsset>& sounds,
                                                    const MatchRules& rules, const SyncGroupList& groups);
/// Uses the moved clip that is nearest in time. Only recordings of the folder of its recording are matched.
/// Absent for a clip that is locked, has sound or would get none. Pure; any thread.
std::optional<CardSuggestion> activeCardSuggestion(const SyncGroup& group, const SyncGroupList& groups,
                                                   const std::vector<const MediaAsset*>& audios,
                                                   MatchRules rules,
                                                   const std::set<std::string>& dismissedKeys);

} // namespace orvane
