#include "OrvaneSyncCore/Services/Takes/RecordedAtOnce.h"

#include "OrvaneSyncCore/Services/Matching/RecorderMark.h"
#include "OrvaneSyncCore/Services/Matching/Recordings.h"
#include "OrvaneSyncCore/Services/Matching/SplitRecordingDetector.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"

#include <algorithm>

namespace orvane {

namespace {

bool areOfOneRecorder(const MediaAsset& a, const MediaAsset& b) {
    return folderPath(a) == folderPath(b) && std::ranges::all_of(RecorderMark::all, [&](RecorderMark::By by) {
               return RecorderMark::of(a, by).isOn(b);
           });
}

bool ranAtOnce(const AudioMatch& a, const AudioMatch& b) {
    const auto rangeOf = [](const AudioMatch& match) {
        return SyncEngine::TCRange{match.syncOffsetSeconds,
                                   match.syncOffsetSeconds + match.audio->durationSeconds.value_or(0)};
    };
    const auto common = SyncEngine::overlapDuration(rangeOf(a), rangeOf(b));
    return common && *common > SplitRecordingDetector::contiguityToleranceSeconds;
}

bool holds(const SyncGroup& group, const MediaAsset& first) {
    return std::ranges::any_of(ofOtherMoments(group), [&](std::size_t match) {
        return group.audioMatches[match].audio->id == first.id;
    });
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

bool areOfOtherMoments(const SyncGroup& a, const SyncGroup& b) {
    const MediaAsset *one = a.primaryAudio(), *other = b.primaryAudio();
    if (one == nullptr || other == nullptr || one->id == other->id) return false;
    return holds(a, *other) || holds(b, *one);
}

} // namespace orvane
