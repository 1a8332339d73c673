#include "OrvaneSyncApp/Controllers/ClipAnalysis.h"

#include "OrvaneSyncCore/Services/SmartAudio/AnalysisCache.h"
#include "OrvaneSyncCore/Services/SmartAudio/ManualOverrides.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <utility>

namespace orvane {

namespace {

/// Tracks that the analysis may use; empty: all.
std::set<int> candidateTracks(const SyncGroup& group, int channelCount) {
    std::set<int> candidates;
    if (group.algorithmExcludedTracks.empty()) return candidates;
    for (int track = 1; track <= channelCount; ++track)
        if (!group.algorithmExcludedTracks.contains(track)) candidates.insert(track);
    return candidates;
}

/// As it was read, for all clips of the recording.
struct KnownAnalysis {
    SmartAudioTerms terms;
    Shared<SmartAudioResult> result;
};

} // namespace

bool hasNoCandidates(const SyncGroup& group) {
    if (group.algorithmExcludedTracks.empty()) return false;
    const int channels = takeOf(group, assumedChannels).channelCount;
    return channels > 0 && candidateTracks(group, channels).empty();
}

AnalysisInput analysisInput(const SyncGroup& group) {
    const Take take = takeOf(group, assumedChannels);
    return {{group, take}, take.channelCount, candidateTracks(group, take.channelCount)};
}

SmartAudioRequest analysisRequest(const SyncGroup& group, const SmartAudioTerms& terms) {
    const Take take = takeOf(group, assumedChannels);
    SmartAudioRequest request;
    request.sound = {group, take};
    request.channelCount = take.channelCount;
    request.mode = terms.mode;
    request.config = terms.config;
    request.ixmlTracks = namedChannels(group, take);
    request.blockSettings = terms.blockSettings;
    request.candidateTracks = candidateTracks(group, request.channelCount);
    return request;
}

std::optional<std::set<int>> tracksToSwitchOn(const SyncGroup& group,
                                              const std::vector<BlockDecision>& blocks,
                                              bool forceOverwriteManualTracks) {
    if (!forceOverwriteManualTracks && group.hasManualTrackEdits()) return std::nullopt;
    std::vector<int> tracks; // few tracks for many blocks
    for (const BlockDecision& block : blocks)
        if (block.activeTrack > 0 && std::ranges::find(tracks, block.activeTrack) == tracks.end())
            tracks.push_back(block.activeTrack);
    std::set<int> active(tracks.begin(), tracks.end());
    if (active.empty() || (group.manualActiveTracks == active && group.tracksManuallyEdited == false))
        return std::nullopt;
    return active;
}

SmartAudioSetAside storedAnalyses(const SyncGroupList& clips, const AnalysisCache& cache,
                                  const std::stop_token& stop) {
    SmartAudioSetAside found;
    std::unordered_map<std::string, std::optional<KnownAnalysis>> known; // by key: cameras share recordings
    for (const SyncGroup& clip : clips) {
        platform::throwIfStopped(stop);
        if (clip.isMOS() || !clip.tracksManuallyEdited || hasNoCandidates(clip)) continue;
        const auto key = AnalysisCache::keyOf(analysisRequest(clip, {}));
        if (!key) continue;
        const auto [place, isNew] = known.try_emplace(*key);
        if (isNew)
            if (auto stored = cache.find(*key))
                place->second = KnownAnalysis{std::move(stored->terms), std::move(stored->result)};
        if (!place->second) continue;
        const auto& [terms, result] = *place->second;
        auto blocks = SmartAudioBlockRouter::applyOverrides(result->blocks,
                                                            SmartAudioBlockRouter::overridesInTakeTime(clip));
        if (tracksToSwitchOn(clip, blocks, false)) continue; // an analysis with other options chose them
        found.results.emplace(clip.id, result);
        found.routed.emplace(clip.id, RoutedClip{analysisInput(clip), terms, result->blocks});
    }
    return found;
}

} // namespace orvane
