#include "OrvaneSyncCore/Services/Review/AlternateAudio.h"

#include "OrvaneSyncCore/Utilities/LaneLayout.h"

#include <algorithm>

namespace orvane {

std::vector<int> alternateAudioLanes(const SyncGroup& group) {
    std::vector<LaneLayout::Interval> intervals;
    for (std::size_t i = 1; i < group.audioMatches.size(); ++i) {
        const AudioMatch& match = group.audioMatches[i];
        const double start = match.syncOffsetSeconds;
        intervals.push_back({start, std::max(start, start + match.audio->durationSeconds.value_or(0))});
    }
    return LaneLayout::assignLanes(intervals);
}

} // namespace orvane
