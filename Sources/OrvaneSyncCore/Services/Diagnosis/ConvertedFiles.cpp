#include "OrvaneSyncCore/Services/Diagnosis/CureWords.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtFinders.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"
#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "Platform/Stop.h"

#include <cmath>
#include <string>
#include <vector>

namespace orvane {

namespace {

/// A recording that lies under no clip at its own rate.
struct Converted {
    const Recording* recording;
    FilePlace place; ///< at the rate that it states

    const MediaAsset& file() const { return *recording->asset; }
};

std::vector<Converted> convertedFiles(const Shoot& shoot) {
    std::vector<Converted> found;
    const std::vector<bool> isUsed = shoot.usedWholes();
    for (std::size_t i = 0; i < shoot.recordings.size(); ++i) {
        const Recording& recording = shoot.recordings[i];
        const MediaAsset& file = *recording.asset;
        if (!file.statedStampRate || !file.sampleRate || !file.bextTimeReference ||
            isUsed[shoot.wholes.firstOf[i]])
            continue;
        const double start = static_cast<double>(*file.bextTimeReference) / *file.statedStampRate +
                             shoot.input.rules.soundOffsetSeconds;
        FilePlace place = recording.place;
        place.range = {start, start + place.range.durationSeconds()};
        found.push_back({&recording, place});
    }
    return found;
}

/// The file with the largest overlap with the clip.
const Converted* convertedUnder(const FilePlace& clip, const std::vector<Converted>& files) {
    const Converted* best = nullptr;
    double most = 0;
    for (const Converted& one : files) {
        const double common = SyncEngine::overlapDuration(clip.range, one.place.range).value_or(0);
        if (common <= most || areOfOtherDays(clip, one.place)) continue;
        most = common;
        best = &one;
    }
    return best;
}

} // namespace

void addConvertedFiles(const Shoot& shoot, SyncDoubts& doubts) {
    const std::vector<Converted> files = convertedFiles(shoot);
    if (files.empty()) return;
    platform::StopCheck check(shoot.stop);
    for (const Shoot::Clip& clip : shoot.clips) {
        check();
        if (!clip.place || clip.isDecided || clip.group->matchStatus.kind != MatchStatus::Kind::unmatched)
            continue;
        const Converted* one = convertedUnder(*clip.place, files);
        if (one == nullptr) continue;
        const MediaAsset &file = one->file(), &video = clip.group->video;
        const double moved = one->place.range.startSeconds - one->recording->place.range.startSeconds;
        const double offset = one->place.range.startSeconds - clip.place->range.startSeconds -
                              SyncEngine::matchByTimecode(video, file, shoot.input.rules).syncOffsetSeconds;
        const std::string own = shoot.nameOf(file) + " in " + shoot.nameOf(video) + " with an offset of " +
                                framesText(offset, video);
        doubts.byGroup[clip.group->id].push_back(
            {.kind = SyncDoubt::Kind::timecodeRate,
             .message = shoot.nameOf(file) + " has " + formatted("%g Hz", *file.sampleRate) +
                        ", and says that its start was counted at " +
                        formatted("%g Hz", *file.statedStampRate) +
                        ", as converted files have it: by that it begins " + spanText(std::abs(moved)) +
                        (moved < 0 ? " earlier" : " later") + ", " + own,
             .cure = "use the files as they came from the recorder, or " +
                     cureWords::asHeard("attach them by hand", "'choice' and 'offset_frames'"),
             .own = own,
             .suggestion = SyncDoubt::Suggestion{file.id, offset}});
    }
}

} // namespace orvane
