#pragma once

#include "OrvaneSyncCore/Services/Takes/Take.h"

#include <cstddef>
#include <vector>

namespace orvane {

/// The recordings that a clip has to choose from: for each the positions of its files in `audioMatches`,
/// ascending. The first is the clip's take; each further one is the take that the clip would have without
/// those before. A copy stands with the recording in front of it. Pure; any thread.
std::vector<std::vector<std::size_t>> recordingsOf(const SyncGroup& group);

/// The one of them that holds the file; empty where the clip has no such recording. Pure; any thread.
std::vector<std::size_t> recordingWith(const SyncGroup& group, const FileURL& file);

/// The same clip with the files of one of its recordings in front of the others.
void putFirst(SyncGroup& group, const std::vector<std::size_t>& recording);

/// The positions of a recording's files in the order of its take: the first is the one by which it is named.
std::vector<std::size_t> inTakeOrder(const SyncGroup& group, const std::vector<std::size_t>& recording);

/// One recording as people name it: "T01.WAV", or "T01_1.WAV + 3 files".
std::string recordingText(const SyncGroup& group, const std::vector<std::size_t>& recording,
                          const FileNames& names);

} // namespace orvane
