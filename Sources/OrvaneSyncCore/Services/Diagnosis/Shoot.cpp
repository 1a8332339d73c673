#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"

#include "OrvaneSyncCore/Services/Diagnosis/Cover.h"
#include "OrvaneSyncCore/Services/Diagnosis/WrittenTimes.h"
#include "OrvaneSyncCore/Services/Matching/RecordingIndex.h"
#include "OrvaneSyncCore/Services/Matching/UnitNearness.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <map>
#include <set>

namespace orvane {

namespace {

/// Whether the clip is left out, locked with its sound, or settled by one of its recordings: the others were
/// removed, or it was put before one that matching would list first (`isEarlier`, if both have equal overlap
/// with the clip). Not true for clips that were settled all together with their first recording, or for a
/// clip that was locked before it had a recording, which is not in the document.
template <class IsOfOtherDay, class IsEarlier>
bool isDecidedIndividually(const SyncGroup& group, const IsOfOtherDay& isOfOtherDay,
                           const IsEarlier& isEarlier) {
    if (group.isExcludedFromExport || (group.isLocked && group.matchStatus.isSettled())) return true;
    if (group.matchStatus.kind != MatchStatus::Kind::manual) return false;
    if (group.audioMatches.size() < 2) return true;
    const Take take = takeOf(group, assumedChannels);
    constexpr double rounding = 1e-6; // of sums of parts
    const double heard = heardSeconds(group, take);
    bool hasAlternate = false;
    for (const TakeFile& file : take.files) {
        if (file.role != TakeRole::alternate) continue;
        hasAlternate = true;
        const AudioMatch& match = group.audioMatches[file.matchIndex];
        const double more = match.overlapDurationSeconds - heard;
        const bool isFirst = more > rounding || (more > -rounding && isEarlier(match));
        if (isFirst && !isOfOtherDay(match)) return true;
    }
    return !hasAlternate;
}

bool isUnplaced(const Shoot::Clip& clip, Places& places) {
    const SyncGroup& group = *clip.group;
    if (group.audioMatches.empty() || group.matchStatus.kind != MatchStatus::Kind::manual || group.isLocked ||
        group.manualAudioOffsetSeconds != 0)
        return false;
    const AudioMatch& first = group.audioMatches.front();
    if (!clip.place || !places.of(*first.audio)) return true;
    return countsFromZero(group.video) && !(first.overlapDurationSeconds > 0);
}

/// `recordings`: those without a place in time.
const MediaAsset* soundAtMidnight(const Shoot::Clip& clip, const std::vector<const MediaAsset*>& recordings,
                                  const Places& places) {
    const auto& matches = clip.group->audioMatches;
    for (const MediaAsset* recording : recordings)
        if (places.midnightOffset(*clip.place, *recording) &&
            std::ranges::none_of(matches,
                                 [&](const AudioMatch& match) { return match.audio->id == recording->id; }))
            return recording;
    return nullptr;
}

} // namespace

double heardSeconds(const SyncGroup& group, const Take& take) {
    std::map<int, double> byChannel;
    for (const TakeFile& file : take.files)
        if (isHeard(file.role))
            byChannel[file.firstChannel] += group.audioMatches[file.matchIndex].overlapDurationSeconds;
    double most = 0;
    for (const auto& [channel, seconds] : byChannel) most = std::max(most, seconds);
    return most;
}

std::string_view folderOf(const MediaAsset& asset) {
    const std::string& path = asset.url.path;
    return std::string_view(path).substr(0, path.rfind('/'));
}

Shoot::Shoot(const DoubtInput& theInput, const std::stop_token& theStop)
    : input(theInput), stop(theStop), recorderFolders(theInput.recordings) {
    Places places(input.rules);
    recordings = recordingsAmong(input.recordings, places, stop);
    wholes = WholeRecordings::of(recordings, input.rules.days, coverSlackSeconds, stop);
    for (std::size_t i = 0; i < recordings.size(); ++i) recordingByID[recordings[i].asset->id] = i;
    std::set<std::string_view> knowTime; // folders
    for (const Recording& recording : recordings) knowTime.insert(folderOf(*recording.asset));
    std::vector<const MediaAsset*> dated; // have a date but no start
    for (const MediaAsset& recording : input.recordings)
        if (recording.contentCreatedDate && !recording.isAtmo() && !recordingByID.contains(recording.id) &&
            knowTime.contains(folderOf(recording)))
            dated.push_back(&recording);
    for (const SyncGroup& group : input.groups) places.learn(group.video);
    clips.reserve(input.groups.size());
    platform::StopCheck check(stop);
    for (const SyncGroup& group : input.groups) {
        check();
        Clip clip{.group = &group, .place = places.of(group.video), .primary = std::nullopt};
        const auto numberOf = [&](const AudioMatch& match) -> std::optional<std::size_t> {
            const auto found = recordingByID.find(match.audio->id);
            return found != recordingByID.end() ? std::optional(found->second) : std::nullopt;
        };
        if (!group.audioMatches.empty()) clip.primary = numberOf(group.audioMatches.front());
        clip.isDecided = isDecidedIndividually(
            group,
            [&](const AudioMatch& match) {
                const auto number = numberOf(match);
                return clip.place && number &&
                       isOfOtherDay(*clip.place, recordings[*number].place, match.syncOffsetSeconds);
            },
            [&](const AudioMatch& match) {
                const auto number = numberOf(match);
                if (!number || !clip.primary) return false;
                const auto nearness = [&](const MediaAsset& sound) {
                    return UnitNearness::of(group.video, sound);
                };
                const auto own = nearness(*match.audio), first = nearness(*recordings[*clip.primary].asset);
                return own > first || (own == first && *number < *clip.primary);
            });
        if (clip.place) {
            clip.isCovered = isCovered(*this, group, clip.place->range.durationSeconds());
        }
        clip.isUnplaced = isUnplaced(clip, places);
        if (clip.place && !clip.isCovered && !clip.isUnplaced)
            clip.atMidnight = soundAtMidnight(clip, dated, places);
        clips.push_back(clip);
    }
    listFiles();
}

void Shoot::listFiles() {
    files.reserve(clips.size() + input.recordings.size());
    for (const Clip& clip : clips) files.push_back({&clip.group->video, 0});
    for (const MediaAsset& recording : input.recordings) files.push_back({&recording, 0});
    const auto folderWithSlash = [](const File& file) {
        const std::string& path = file.asset->url.path;
        return std::string_view(path).substr(0, path.rfind('/') + 1);
    };
    std::map<std::string_view, std::size_t> numbers;
    for (const File& file : files) numbers.try_emplace(folderWithSlash(file));
    for (auto& [folder, number] : numbers) {
        number = folders.size();
        folders.push_back(folder);
    }
    recordingFolders.reserve(recordings.size());
    for (File& file : files) {
        file.folder = numbers.at(folderWithSlash(file));
        const std::size_t next = recordingFolders.size(); // both lists have one order
        if (next < recordings.size() && recordings[next].asset->id == file.asset->id)
            recordingFolders.push_back(file.folder);
    }
}

std::vector<bool> Shoot::usedWholes() const {
    std::vector<bool> isUsed(recordings.size());
    for (const Clip& clip : clips)
        for (const AudioMatch& match : clip.group->audioMatches)
            if (const auto found = recordingByID.find(match.audio->id); found != recordingByID.end())
                isUsed[wholes.firstOf[found->second]] = true;
    return isUsed;
}

} // namespace orvane
