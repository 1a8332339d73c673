#pragma once

#include "OrvaneSyncApp/Controllers/SmartAudioCaches.h"

#include <optional>
#include <set>
#include <stop_token>
#include <vector>

namespace orvane {

class AnalysisCache;

// What an analysis takes from a clip, and what its result changes in the clip. Any thread.

/// Whether the editor excludes every track of the clip's take from the analysis.
bool hasNoCandidates(const SyncGroup& group);

AnalysisInput analysisInput(const SyncGroup& group);
/// Without progress, stems and further listeners.
SmartAudioRequest analysisRequest(const SyncGroup& group, const SmartAudioTerms& terms);

/// The tracks that the blocks use; absent if they are on already or the editor chose tracks.
std::optional<std::set<int>> tracksToSwitchOn(const SyncGroup& group,
                                              const std::vector<BlockDecision>& blocks,
                                              bool forceOverwriteManualTracks);

/// The stored analyses of clips that were analysed in an earlier run of the program: their tracks were chosen
/// by an analysis or, after one, by the editor. Only results that change nothing in the clip. Reads files.
/// Throws Stopped.
SmartAudioSetAside storedAnalyses(const SyncGroupList& clips, const AnalysisCache& cache,
                                  const std::stop_token& stop);

} // namespace orvane
