#include "OrvaneSyncCore/Services/Takes/RecordedAtOnce.h"

#include "OrvaneSyncCore/Services/Matching/RecorderMark.h"
#include "OrvaneSyncCore/Services/Matching/Recordings.h"
#include "OrvaneSyncCore/Services/Matching/SplitRecordingDetector.h"
#include "OrvaneSyncCore/Services/Matching/TakeMembership.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"

#include <algorithm>
#include <array>

namespace orvane {

namespace {

SyncEngine::TCRange rangeFrom(double startSeconds, const MediaAsset& audio) {
    return {startSeconds, startSeconds + audio.durationSeconds.value_or(0)};
}

bool ranAtOnce(const AudioMatch& a, const AudioMatch& b) {
    const auto common = SyncEngine::overlapDuration(rangeFrom(a.syncOffsetSeconds, *a.audio),
                                                    rangeFrom(b.syncOffsetSeconds, *b.audio));
    return common && *common > SplitRecordingDetector::contiguityToleranceSeconds;
}

bool holds(const SyncGroup& group, const MediaAsset& first) {
    return std::ranges::any_of(ofOtherMoments(group), [&](std::size_t match) {
        return group.audioMatches[match].audio->id == first.id;
    });
}

/// The start of a clip's sound on the axis of its picture.
double firstSoundAt(const SyncGroup& group) {
    return group.audioMatches.front().syncOffsetSeconds + group.manualAudioOffsetSeconds;
}

/// More than half of the shorter one must lie within the other: sound that was moved by hand under one clip
/// only may overlap the take of the next clip a little.
bool areTakesOfOneTime(const TakeMembership::Candidate& one, const TakeMembership::Candidate& other) {
    const auto common = SyncEngine::overlapDuration(one.range, other.range);
    const double shorter = std::min(one.range.endSeconds - one.range.startSeconds,
                                    other.range.endSeconds - other.range.startSeconds);
    return common && *common > shorter / 2 && areOfOneRecorder(*one.audio, *other.audio) &&
           !TakeMembership::of(std::array{one, other}).alternates.empty();
}

} // namespace

std::vector<std::size_t> ofOtherMoments(const SyncGroup& group) {
    std::vector<std::size_t> found;
    if (group.audioMatches.size() < 2) return found;
    const AudioMatch& first = group.audioMatches.front();
    for (const TakeFile& file : takeOf(group, assumedChannels).files) {
        const AudioMatch& match = group.audioMatches[file.matchIndex];
        if (file.role == TakeRole::alternate && areOfOneRecorder(*first.audio, *match.audio) &&
            ranAtOnce(first, match))
            found.push_back(file.matchIndex);
    }
    return found;
}

bool areOfOtherMoments(const SyncGroup& a, const SyncGroup& b, double distanceSeconds) {
    const MediaAsset *one = a.primaryAudio(), *other = b.primaryAudio();
    if (one == nullptr || other == nullptr || one->id == other->id || one->url.path == other->url.path)
        return false;
    return holds(a, *other) || holds(b, *one) ||
           areTakesOfOneTime({one, rangeFrom(firstSoundAt(a), *one)},
                             {other, rangeFrom(firstSoundAt(b) + distanceSeconds, *other)});
}

} // namespace orvane
