#include "OrvaneSyncApp/Controllers/ProjectTracks.h"

#include "OrvaneSyncCore/Services/Matching/ChannelNames.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"
#include "OrvaneSyncCore/Services/Takes/ClipRecordings.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"
#include "OrvaneSyncCore/Services/Takes/TakeDecisions.h"
#include "Platform/Text.h"

#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace orvane {

namespace {

bool hasTrackDecisions(const SyncGroup& group) {
    return !group.manualActiveTracks.empty() || !group.algorithmExcludedTracks.empty() ||
           !group.manualBlockOverrides.empty();
}

/// Compares by name, because a card may be mounted at another path.
bool hasRecordings(const SyncGroup& group, const std::vector<FileURL>& recordings) {
    std::multiset<std::string> own, others;
    for (const AudioMatch& match : group.audioMatches) own.insert(match.audio->normalizedName());
    for (const FileURL& recording : recordings)
        others.insert(MediaAsset(recording, AssetKind::audio).normalizedName());
    return own == others;
}

/// Whether the clip's first recording is not the project's first one, although all of the project's
/// recordings are known: the editor had chosen or attached the project's first one.
bool startsWithAnother(const SyncGroup& group, const std::vector<FileURL>& recordings,
                       const AudioByURL& known) {
    return group.audioMatches.front().audio->url != recordings.front() &&
           std::ranges::all_of(recordings, [&](const FileURL& one) { return known.contains(one); });
}

/// Whether the channels of a missing file counted after those of this file of the take, or did not count,
/// whatever metadata the missing file has. Channels are counted in the order of the paths; those of other
/// recorders come last.
bool countsBehind(const FileURL& missing, const MediaAsset& file) {
    using platform::text::localizedStandardSortKey;
    if (localizedStandardSortKey(file.url.pathText()) < localizedStandardSortKey(missing.pathText()))
        return true;
    const MediaAsset other(missing, AssetKind::audio);
    if (other.normalizedName() == file.normalizedName())
        return true; // a copy, or a recorder that uses the same numbers
    const auto isStated = [](const std::optional<std::string>& text) {
        return text && !platform::text::trimmed(*text).empty();
    };
    const auto& ixml = file.ixmlData;
    // Files with the same scene and take in their metadata belong to one take, whatever their names are.
    if (ixml && isStated(ixml->scene) && isStated(ixml->take)) return false;
    return !ChannelName(other).differsOnlyInChannel(ChannelName(file));
}

/// Whether all decisions are about channels of the take whose numbers are the same without the missing
/// recordings.
bool holdsWithout(const std::vector<FileURL>& missing, const SyncGroup& group, const SyncGroup& before) {
    const Take take = takeOf(before, assumedChannels);
    const auto isOfTake = [&](int number) { return number <= take.channelCount; };
    const auto isAboutTake = [&](const BlockOverride& range) { return isOfTake(range.trackIndex); };
    return std::ranges::all_of(group.manualActiveTracks, isOfTake) &&
           std::ranges::all_of(group.algorithmExcludedTracks, isOfTake) &&
           std::ranges::all_of(group.manualBlockOverrides, isAboutTake) &&
           std::ranges::all_of(take.files, [&](const TakeFile& file) {
               return !isHeard(file.role) || std::ranges::all_of(missing, [&](const FileURL& other) {
                   return countsBehind(other, *before.audioMatches[file.matchIndex].audio);
               });
           });
}

using EntriesByVideoURL = std::unordered_map<FileURL, const PersistedGroup*>;

EntriesByVideoURL entriesOf(const OrvaneSyncProject& project) {
    EntriesByVideoURL entries;
    for (const PersistedGroup& entry : project.groups) entries[entry.videoPath] = &entry;
    return entries;
}

} // namespace

void settleAsStored(const OrvaneSyncProject& project, SyncGroupList& groups) {
    const EntriesByVideoURL entries = entriesOf(project);
    const std::string_view byHand = MatchStatus::manual().name();
    const auto isToBeSettled = [&](const SyncGroup& group) {
        const auto entry = entries.find(group.video.url);
        return entry != entries.end() && entry->second->matchStatusRaw == byHand &&
               group.audioMatches.size() > 1 && !entry->second->audioPaths.empty() &&
               !recordingWith(group, entry->second->audioPaths.front()).empty();
    };
    groups.updateWhere(isToBeSettled, [&](SyncGroup& group) {
        putFirst(group, recordingWith(group, entries.at(group.video.url)->audioPaths.front()));
        group.matchStatus = MatchStatus::manual();
    });
}

std::vector<FileURL> fitTracksToRecordings(const OrvaneSyncProject& project, SyncGroupList& groups,
                                           const AudioByURL& known, const MatchRules& rules) {
    const EntriesByVideoURL entries = entriesOf(project);
    const auto countsOtherChannels = [&](const SyncGroup& group) {
        const auto entry = entries.find(group.video.url);
        if (entry == entries.end() || group.isMOS()) return false;
        const auto& recordings = entry->second->audioPaths;
        return (hasTrackDecisions(group) || group.audioAnchorOffsetInAudioSeconds) &&
               (!hasRecordings(group, recordings) || startsWithAnother(group, recordings, known));
    };
    std::vector<FileURL> leftOut;
    groups.updateWhere(countsOtherChannels, [&](SyncGroup& group) {
        SyncGroup before = group;
        before.audioMatches.clear();
        const auto& recordings = entries.at(group.video.url)->audioPaths;
        std::vector<FileURL> missing;
        for (const FileURL& recording : recordings)
            if (const auto audio = known.find(recording); audio != known.end())
                before.audioMatches.push_back(
                    SyncEngine::matchByTimecode(group.video, *audio->second, rules));
            else
                missing.push_back(recording);
        const bool isTakeKnown =
            !before.audioMatches.empty() && before.audioMatches.front().audio->url == recordings.front();
        if (isTakeKnown && (missing.empty() || holdsWithout(missing, group, before))) {
            carryDecisions(group, before);
            return carryAnchor(group, before);
        }
        if (!hasTrackDecisions(group)) return;
        group.manualActiveTracks.clear();
        group.algorithmExcludedTracks.clear();
        group.manualBlockOverrides.clear();
        leftOut.push_back(group.video.url);
    });
    return leftOut;
}

} // namespace orvane
