#include "OrvaneSyncCore/Services/Diagnosis/HeardDates.h"

#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/WrittenTimes.h"

#include <algorithm>

namespace orvane {

HeardDates HeardDates::of(const std::vector<HeardStart>& heard) {
    std::vector<double> atStart, atEnd;
    for (const HeardStart& one : heard) {
        const MediaAsset& video = one.clip->group->video;
        const auto written = writtenSeconds(video);
        if (!written) continue;
        atStart.push_back(one.seconds - *written);
        atEnd.push_back(one.seconds + video.durationSeconds.value_or(0) - *written);
    }
    HeardDates dates;
    dates.clips = std::ssize(atStart);
    if (dates.clips < explanation::fewest) return dates;
    const auto ofStarts = std::ranges::minmax(atStart), ofEnds = std::ranges::minmax(atEnd);
    dates.areOfEnds = ofEnds.max - ofEnds.min < ofStarts.max - ofStarts.min;
    const auto& [least, most] = dates.areOfEnds ? ofEnds : ofStarts;
    constexpr double wholeSeconds = 1.2; // the resolution of dates, with some tolerance
    if (most - least <= wholeSeconds) dates.correction = (least + most) / 2;
    return dates;
}

double HeardDates::startOf(const MediaAsset& video, double writtenSeconds) const {
    return writtenSeconds + *correction - (areOfEnds ? video.durationSeconds.value_or(0) : 0);
}

std::optional<HeardStart> heardStart(const Shoot& shoot, const Shoot::Clip& clip, const UUID& recording,
                                     double offsetSeconds) {
    const auto found = shoot.recordingByID.find(recording);
    if (found == shoot.recordingByID.end() || !shoot.recordings[found->second].place.day) return std::nullopt;
    const Recording& sound = shoot.recordings[found->second];
    const auto positioned = SyncEngine::matchByTimecode(clip.group->video, *sound.asset, shoot.input.rules);
    return HeardStart{&clip, onLine(sound.place).startSeconds - positioned.syncOffsetSeconds - offsetSeconds};
}

Cover datedRecordings(const Shoot& shoot) {
    Cover cover;
    for (std::size_t i = 0; i < shoot.recordings.size(); ++i)
        if (const FilePlace& place = shoot.recordings[i].place; place.day) cover.add(onLine(place), i);
    cover.finish();
    return cover;
}

} // namespace orvane
