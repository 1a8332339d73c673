#include "OrvaneSyncCore/Services/Diagnosis/ClipClaims.h"

#include "OrvaneSyncCore/Services/Diagnosis/ClaimedOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtFinders.h"

#include <algorithm>
#include <cmath>

namespace orvane {

namespace {

constexpr std::size_t mostClipsToHear = 30, mostRivals = 3;
constexpr std::ptrdiff_t mostEqualToHear = 12; // a sample of all
constexpr double equalShare = 0.9;             // of the overlap of the first one
constexpr double alikeSeconds = 0.2;           // a camera's own delay; the files of one take

/// Whether any of the clip's recordings may be the right one: it has several to choose from, or it was
/// settled by the one listed first.
bool isAmbiguous(const SyncGroup& group) {
    using enum MatchStatus::Kind;
    return group.matchStatus.kind == ambiguous ||
           (group.matchStatus.kind == manual && group.audioMatches.size() > 1);
}
bool isAmbiguous(const Shoot::Clip& clip) { return isAmbiguous(*clip.group) && !clip.isDecided; }

/// Whether the order of the paths may have decided which recording is the clip's first.
bool mayHaveEquals(const Shoot::Clip& clip) {
    const SyncGroup& group = *clip.group;
    return group.matchStatus.isSettled() && group.matchStatus.kind != MatchStatus::Kind::manual &&
           !clip.isDecided && group.audioMatches.size() > 1;
}

SoundClaim attachedClaim(const Shoot::Clip& clip) {
    const AudioMatch& match = clip.group->audioMatches.front();
    return {clip.group->id, match.audio->id, match.syncOffsetSeconds,
            std::min(match.audio->durationSeconds.value_or(0), furthestAttachedSeconds)};
}

/// The matches whose recordings have different places, by number of the match. Of a clip that is not
/// ambiguous, only those that overlap it as much as the first.
std::vector<std::size_t> rivalsOf(const SyncGroup& group) {
    std::vector<std::size_t> rivals;
    const double least = !isAmbiguous(group) && !group.audioMatches.empty()
                             ? equalShare * group.audioMatches.front().overlapDurationSeconds
                             : 0;
    for (std::size_t i = 0; i < group.audioMatches.size() && rivals.size() < mostRivals; ++i) {
        const AudioMatch& own = group.audioMatches[i];
        if (own.overlapDurationSeconds < least) continue;
        if (std::ranges::none_of(rivals, [&](std::size_t other) {
                const AudioMatch& match = group.audioMatches[other];
                return folderOf(*match.audio) == folderOf(*own.audio) &&
                       std::abs(match.syncOffsetSeconds - own.syncOffsetSeconds) < alikeSeconds;
            }))
            rivals.push_back(i);
    }
    return rivals;
}

} // namespace

SoundClaim claimInPlace(const Shoot::Clip& clip, const AudioMatch& match) {
    const bool isClose = !isAudible(clip);
    return {clip.group->id, match.audio->id, match.syncOffsetSeconds, isClose ? closeReachSeconds : 0,
            isClose};
}

bool isHeardInPlace(const Shoot& shoot, const Shoot::Clip& clip, const AudioMatch& match) {
    const HeardClaim* heard = heardClaim(shoot, claimInPlace(clip, match));
    return heard != nullptr && heard->offsetSeconds &&
           std::abs(*heard->offsetSeconds - match.syncOffsetSeconds) < alikeSeconds;
}

bool isRecordingHeard(const Shoot& shoot, const Shoot::Clip& clip, const AudioMatch& match) {
    if (isHeardInPlace(shoot, clip, match)) return true;
    if (shoot.input.heardLags == nullptr) return false;
    const auto lag = shoot.input.heardLags->find(match.id);
    return lag != shoot.input.heardLags->end() && std::abs(lag->second.seconds) < inPlaceSeconds;
}

std::optional<std::size_t> heardAmong(const Shoot& shoot, const Shoot::Clip& clip) {
    if (shoot.input.heardClaims == nullptr || !(isAmbiguous(clip) || mayHaveEquals(clip)))
        return std::nullopt;
    const auto rivals = rivalsOf(*clip.group);
    if (!isAmbiguous(clip) && rivals.size() < 2) return std::nullopt;
    std::optional<std::size_t> result;
    for (const std::size_t rival : rivals) {
        const AudioMatch& match = clip.group->audioMatches[rival];
        if (!isHeardInPlace(shoot, clip, match)) continue;
        if (result) return std::nullopt;
        result = rival;
    }
    return result;
}

SyncDoubt::Suggestion suggestionToChoose(const Shoot& shoot, const Shoot::Clip& clip, std::size_t match) {
    const SyncGroup& group = *clip.group;
    const auto isOutOfPlace = [&](const AudioMatch& other) {
        if (isHeardInPlace(shoot, clip, other)) return false;
        const auto isOfFolder = [&](const MediaAsset& recording) {
            return shoot.recorderOf(recording) == shoot.recorderOf(*other.audio);
        };
        if (areHeardOutOfPlace(shoot, isOfFolder)) return true;
        const HeardClaim* heard = heardClaim(shoot, claimInPlace(clip, other));
        if (heard == nullptr || !heard->couldHear) return false;
        return heard->offsetSeconds || std::ranges::none_of(shoot.clips, [&](const Shoot::Clip& one) {
                   return std::ranges::any_of(one.group->audioMatches, [&](const AudioMatch& own) {
                       return isOfFolder(*own.audio) && isHeardInPlace(shoot, one, own);
                   });
               });
    };
    return {.recordingID = group.audioMatches[match].audio->id,
            .isAlone = std::ranges::any_of(group.audioMatches, isOutOfPlace)};
}

std::optional<double> heardAttached(const Shoot& shoot, const Shoot::Clip& clip) {
    const HeardClaim* heard = clip.isUnplaced ? heardClaim(shoot, attachedClaim(clip)) : nullptr;
    return heard != nullptr ? heard->offsetSeconds : std::nullopt;
}

void addDayClaims(const Shoot& shoot, SyncDoubts& doubts, std::vector<SoundClaim>& toHear) {
    addDayDoubts(shoot, doubts);
    std::vector<const Shoot::Clip*> clips;
    for (const Shoot::Clip& clip : shoot.clips)
        if (mayHaveHeard(clip, leastCloseSeconds) && clip.place &&
            !(clip.likelyDay() && clip.primary && shoot.recordings[*clip.primary].place.day) &&
            doubts.has(clip.group->id, {SyncDoubt::Kind::otherDay}))
            clips.push_back(&clip);
    const std::size_t count = std::min(mostClipsToHear, clips.size());
    for (std::size_t i = 0; i < count; ++i) {
        const Shoot::Clip& clip = *clips[i * clips.size() / count];
        std::size_t rivals = 0;
        for (const AudioMatch& match : clip.group->audioMatches)
            if (const SoundClaim claim = claimInPlace(clip, match);
                rivals++ < mostRivals && heardClaim(shoot, claim) == nullptr)
                toHear.push_back(claim);
    }
}

void addClipClaims(const Shoot& shoot, std::vector<SoundClaim>& toHear) {
    std::size_t ambiguous = 0, attached = 0;
    const auto ask = [&](const SoundClaim& claim) {
        if (heardClaim(shoot, claim) == nullptr) toHear.push_back(claim);
    };
    std::vector<const Shoot::Clip*> equal;
    for (const Shoot::Clip& clip : shoot.clips) {
        if (!mayHaveHeard(clip, leastCloseSeconds)) continue;
        if (mayHaveEquals(clip) && rivalsOf(*clip.group).size() > 1) equal.push_back(&clip);
        if (isAmbiguous(clip) && ++ambiguous <= mostClipsToHear)
            for (const std::size_t rival : rivalsOf(*clip.group))
                ask(claimInPlace(clip, clip.group->audioMatches[rival]));
        if (clip.isUnplaced && ++attached <= mostClipsToHear) ask(attachedClaim(clip));
    }
    const std::ptrdiff_t count = std::min(mostEqualToHear, std::ssize(equal));
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const Shoot::Clip& clip = *equal[static_cast<std::size_t>(i * std::ssize(equal) / count)];
        for (const std::size_t rival : rivalsOf(*clip.group))
            ask(claimInPlace(clip, clip.group->audioMatches[rival]));
    }
}

} // namespace orvane
