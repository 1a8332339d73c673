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

/// Settles the clips that the editor had settled by hand when the project was saved: the recording that came
/// first in it does again, where the scan has found it for the clip. Before `fitTracksToRecordings`.
void settleAsStored(const OrvaneSyncProject& project, SyncGroupList& groups);

/// The tracks that a project's edits chose in clips whose recordings are others than the project names, or
/// begin with another: each choice goes to its own channel where all recordings that it was counted in are
/// known, or where those that are not have no part in its numbers, as a second recorder's have none in those
/// of the take. Else it is taken out, as it would switch on another microphone. A sync anchor keeps its place
/// under the picture. Returns the videos of the clips that lost it. `rules`: by which the clips were matched.
std::vector<FileURL> fitTracksToRecordings(const OrvaneSyncProject& project, SyncGroupList& groups,
                                           const AudioByURL& known, const MatchRules& rules);

} // namespace orvane
