#pragma once

#include "OrvaneSyncCore/Models/FileURL.h"
#include "OrvaneSyncCore/Models/MediaAsset.h"
#include "OrvaneSyncCore/Models/OrvaneSyncProject.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Matching/MatchRules.h"

#include <unordered_map>
#include <vector>

namespace orvane {

using AudioByURL = std::unordered_map<FileURL, const MediaAsset*>;

/// Settles the clips that the editor had settled when the project was saved: the recording that came first
/// then is put first again, if the scan has found it for the clip. To be called before
/// `fitTracksToRecordings`.
void settleAsStored(const OrvaneSyncProject& project, SyncGroupList& groups);

/// Adapts the tracks that a project's edits chose in clips whose recordings, or whose first recording, differ
/// from those in the project. Each choice is moved to its own channel if all recordings that it was counted
/// in are known, or if the unknown ones do not count in its numbers (a second recorder's channels do not
/// count in the numbers of the take). Otherwise the choice is removed, because it would switch on another
/// microphone. A sync anchor keeps its position in the picture. Returns the videos of the clips that lost
/// their choice. `rules`: the rules by which the clips were matched.
std::vector<FileURL> fitTracksToRecordings(const OrvaneSyncProject& project, SyncGroupList& groups,
                                           const AudioByURL& known, const MatchRules& rules);

} // namespace orvane
