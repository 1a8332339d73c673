#include "OrvaneSyncCore/Services/Review/CardSuggestion.h"

#include "OrvaneSyncCore/Services/Matching/Recordings.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"
#include "OrvaneSyncCore/Services/Naming/GroupNaming.h"
#include "OrvaneSyncCore/Services/Review/SiblingSuggestion.h"
#include "OrvaneSyncCore/Services/Takes/ClipRecordings.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace orvane {

namespace {

constexpr double leastSeconds = 0.2; // a smaller move is a nudge, or a camera's own delay

/// Of the clip. A recording that meets less of it may be that of another clip.
constexpr double leastShare = 0.5;

bool areOfOneCard(const MediaAsset& a, const MediaAsset& b) {
    return folderPath(a) == folderPath(b) && GroupNaming::cameraLetter(a) == GroupNaming::cameraLetter(b);
}

const FileURL& urlOfVideo(const SyncGroup* group) { return group->video.url; }

double coveredShare(const SyncGroup& matched) {
    const Take take = takeOf(matched, assumedChannels);
    const double length = *matched.video.durationSeconds;
    const double end = std::min(take.offsetSeconds + take.durationSeconds, length);
    return (end - std::max(take.offsetSeconds, 0.0)) / length;
}

/// The clip of the card that was moved by hand and is nearest to that one. A place that no timecode gives
/// shows nothing about the clock.
SyncGroupList::Element nearestMoved(const SyncGroup& group, const SyncGroupList& groups) {
    const auto own = SyncEngine::tcRange(group.video);
    if (!own) return nullptr;
    SyncGroupList::Element nearest;
    double least = 0;
    for (std::size_t i = 0; i < groups.size(); ++i) {
        const SyncGroup& other = groups[i];
        if (std::abs(other.manualAudioOffsetSeconds) < leastSeconds || other.isMOS() ||
            !areOfOneCard(other.video, group.video))
            continue;
        const auto range = SyncEngine::tcRange(other.video);
        if (!range || !SyncEngine::tcRange(*other.primaryAudio())) continue;
        const double away = std::abs(range->startSeconds - own->startSeconds);
        if (nearest && away >= least) continue;
        nearest = groups.element(i);
        least = away;
    }
    return nearest;
}

} // namespace

bool lacksSound(const SyncGroup& group) {
    return group.matchStatus.kind == MatchStatus::Kind::unmatched && group.isMOS() && !group.isLocked &&
           !group.isExcludedFromExport;
}

std::vector<CardSuggestion::Clip> clipsMatchedAlone(const std::vector<const SyncGroup*>& clips,
                                                    const std::vector<MediaAsset>& sounds,
                                                    const MatchRules& rules, const SyncGroupList& groups) {
    std::vector<MediaAsset> videos;
    for (const SyncGroup* clip : clips) videos.push_back(clip->video);
    std::vector<CardSuggestion::Clip> found;
    for (const SyncGroup& matched : SyncEngine().match(videos, sounds, rules, {}, &groups)) {
        if (matched.isMOS() || coveredShare(matched) < leastShare) continue;
        auto& own = found.emplace_back();
        own.groupID = (*std::ranges::find(clips, matched.video.url, urlOfVideo))->id;
        const auto files = inTakeOrder(matched, recordingsOf(matched).front());
        for (const std::size_t file : files) own.files.push_back(matched.audioMatches[file].audio);
        own.startSeconds = matched.audioMatches[files.front()].syncOffsetSeconds;
    }
    return found;
}

std::optional<CardSuggestion> activeCardSuggestion(const SyncGroup& group, const SyncGroupList& groups,
                                                   const std::vector<const MediaAsset*>& audios,
                                                   MatchRules rules,
                                                   const std::set<std::string>& dismissedKeys) {
    using Clip = CardSuggestion::Clip;
    CardSuggestion suggestion;
    if (!lacksSound(group)) return std::nullopt;
    suggestion.moved = nearestMoved(group, groups);
    if (!suggestion.moved) return std::nullopt;
    const double offset = suggestion.offsetSeconds = suggestion.moved->manualAudioOffsetSeconds;
    constexpr double milliseconds = 1000;
    suggestion.dismissKey = "card:" + std::string(folderPath(group.video)) + ":" +
                            GroupNaming::cameraLetter(group.video).value_or("") + ":" +
                            std::to_string(std::lround(offset * milliseconds));
    if (dismissedKeys.contains(suggestion.dismissKey)) return std::nullopt;

    std::vector<const SyncGroup*> card;
    std::vector<MediaAsset> sounds;
    for (const SyncGroup& other : groups)
        if (lacksSound(other) && areOfOneCard(other.video, group.video)) card.push_back(&other);
    for (const MediaAsset* audio : audios)
        if (folderPath(*audio) == folderPath(*suggestion.moved->primaryAudio())) sounds.push_back(*audio);
    rules.soundOffsetSeconds += offset;
    suggestion.clips = clipsMatchedAlone(card, sounds, rules, groups);
    const auto inView = std::ranges::find(suggestion.clips, group.id, &Clip::groupID);
    if (inView == suggestion.clips.end()) return std::nullopt;
    std::rotate(suggestion.clips.begin(), inView, inView + 1);
    return suggestion;
}

std::string CardSuggestion::text(double frameRate, const FileNames& names) const {
    return "The sound of " + names.of(moved->video) + " was shifted " +
           formatOffset(offsetSeconds, frameRate) + " by hand. Shifted as much, " +
           names.of(*clips.front().files.front()) + " fits this clip.";
}

} // namespace orvane
