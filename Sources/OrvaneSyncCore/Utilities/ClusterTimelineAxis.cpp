#include "OrvaneSyncCore/Utilities/ClusterTimelineAxis.h"

#include <algorithm>
#include <cmath>

namespace orvane {

namespace {

bool isLength(double value) { return std::isfinite(value) && value > 0; }

/// A position on an axis as a share of its length, from 0 to 1.
double share(double position, double length) { return std::clamp(position / length, 0.0, 1.0); }

} // namespace

double ClusterTimelineAxis::progress(double compositionSeconds, double syncOffsetSeconds,
                                     double totalSeconds) {
    if (!isLength(totalSeconds) || !std::isfinite(compositionSeconds) || !std::isfinite(syncOffsetSeconds))
        return 0;
    return share(compositionSeconds - syncOffsetSeconds, totalSeconds);
}

double ClusterTimelineAxis::audioClockSeconds(double atX, double width, double totalSeconds) {
    if (!isLength(width) || !isLength(totalSeconds) || !std::isfinite(atX)) return 0;
    return share(atX, width) * totalSeconds;
}

double ClusterTimelineAxis::x(double forAudioClockSeconds, double width, double totalSeconds) {
    return audioClockSeconds(forAudioClockSeconds, totalSeconds, width); // the same mapping with the two axes
                                                                         // exchanged
}

} // namespace orvane
