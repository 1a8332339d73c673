#include "OrvaneSyncCore/Services/Diagnosis/LateStartsAndEarlyStops.h"

#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/Cover.h"

#include <algorithm>
#include <cmath>

namespace orvane {

void LateStartsAndEarlyStops::add(const SyncEngine::TCRange& clip, const SyncEngine::TCRange& sound) {
    ++count_;
    if (std::min(clip.endSeconds, sound.endSeconds) <= std::max(clip.startSeconds, sound.startSeconds))
        return;
    ++overlapping_;
    const auto [first, last] =
        std::minmax(clip.startSeconds - sound.startSeconds, clip.endSeconds - sound.endSeconds);
    furthest_ = std::max({furthest_, first - coverSlackSeconds, -last - coverSlackSeconds});
}

bool LateStartsAndEarlyStops::explain(const CommonOffset& offset) const {
    constexpr double longestDelaySeconds = 12;
    return offset.isOdd() && count_ > 0 && overlapping_ >= explanation::majority * count_ &&
           (std::abs(offset.seconds) <= offset.widthSeconds || furthest_ <= longestDelaySeconds);
}

} // namespace orvane
