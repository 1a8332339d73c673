#include "OrvaneSyncApp/Controllers/ProjectTracks.h"

#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"
#include "OrvaneSyncCore/Services/Takes/TakeDecisions.h"

#include <set>
#include <string>

namespace orvane {

namespace {

bool hasTrackDecisions(const SyncGroup& group) {
    return !group.manualActiveTracks.empty() || !group.algorithmExcludedTracks.empty() ||
           !group.manualBlockOverrides.empty();
}

/// By their names: a card may have moved.
bool hasRecordings(const SyncGroup& group, const std::vector<FileURL>& recordings) {
    std::multiset<std::string> own, others;
    for (const AudioMatch& match : group.audioMatches) own.insert(match.audio->normalizedName());
    for (const FileURL& recording : recordings)
        others.insert(MediaAsset(recording, AssetKind::audio).normalizedName());
    return own == others;
}

} // namespace

std::vector<FileURL> fitTracksToRecordings(const OrvaneSyncProject& project, SyncGroupList& groups,
                                           const AudioByURL& known, const MatchRules& rules) {
    std::unordered_map<FileURL, const PersistedGroup*> entries;
    for (const PersistedGroup& entry : project.groups) entries[entry.videoPath] = &entry;
    const auto countsOtherChannels = [&](const SyncGroup& group) {
        const auto entry = entries.find(group.video.url);
        return entry != entries.end() && hasTrackDecisions(group) && !group.isMOS() &&
               !hasRecordings(group, entry->second->audioPaths);
    };
    std::vector<FileURL> leftOut;
    groups.updateWhere(countsOtherChannels, [&](SyncGroup& group) {
        SyncGroup before = group;
        before.audioMatches.clear();
        const auto& recordings = entries.at(group.video.url)->audioPaths;
        for (const FileURL& recording : recordings)
            if (const auto audio = known.find(recording); audio != known.end())
                before.audioMatches.push_back(
                    SyncEngine::matchByTimecode(group.video, *audio->second, rules));
        if (!recordings.empty() && before.audioMatches.size() == recordings.size())
            return carryDecisions(group, before);
        group.manualActiveTracks.clear();
        group.algorithmExcludedTracks.clear();
        group.manualBlockOverrides.clear();
        leftOut.push_back(group.video.url);
    });
    return leftOut;
}

} // namespace orvane
