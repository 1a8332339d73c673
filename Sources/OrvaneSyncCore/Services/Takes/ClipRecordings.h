#pragma once

#include "OrvaneSyncCore/Services/Takes/Take.h"

#include <cstddef>
#include <vector>

namespace orvane {

/// The recordings among which a clip can choose: for each, the positions of its files in `audioMatches`,
/// ascending. The first is the clip's take; each further one is the take that the clip would have without the
/// ones before. A copy belongs to the recording before it. Pure; any thread.
std::vector<std::vector<std::size_t>> recordingsOf(const SyncGroup& group);

/// The recording that contains the file; empty if the clip has no such recording. Pure; any thread.
std::vector<std::size_t> recordingWith(const SyncGroup& group, const FileURL& file);

/// Moves the files of one of the clip's recordings before the others.
void putFirst(SyncGroup& group, const std::vector<std::size_t>& recording);

/// The status of a clip from which a recording was removed by hand. If only files of one take are left, there
/// is nothing to choose, however many they are.
MatchStatus statusAfterRemoval(const SyncGroup& group);

/// The positions of a recording's files in the order of its take; the first file gives the recording its
/// name.
std::vector<std::size_t> inTakeOrder(const SyncGroup& group, const std::vector<std::size_t>& recording);

/// The name of a recording for the user: "T01.WAV", or "T01_1.WAV + 3 files".
std::string recordingText(const SyncGroup& group, const std::vector<std::size_t>& recording,
                          const FileNames& names);

} // namespace orvane
