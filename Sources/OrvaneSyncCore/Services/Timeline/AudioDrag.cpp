#include "OrvaneSyncCore/Services/Timeline/AudioDrag.h"

#include "OrvaneSyncCore/Services/Waveform/OnsetDetector.h"
#include "Timecode/ExactRate.h"

#include <cmath>

namespace orvane {

namespace {

double draggedSeconds(double seconds, DragModifiers modifiers, const AudioDrag::Timeline& timeline) {
    if (modifiers.command) return seconds;
    if (modifiers.shift && timeline.anchorSeconds && !timeline.onsetMarkers.empty())
        return OnsetDetector::snap(seconds + *timeline.anchorSeconds, timeline.onsetMarkers,
                                   OnsetDetector::dragThresholdSeconds) -
               *timeline.anchorSeconds;
    const double rate = exactRateValue(timeline.frameRate);
    return std::round(seconds * rate) / rate;
}

} // namespace

std::optional<double> AudioDrag::move(double translation, DragModifiers modifiers, const Timeline& timeline) {
    const double seconds = draggedSeconds(translation / timeline.pixelsPerSecond, modifiers, timeline);
    if (!std::isfinite(seconds)) return std::nullopt; // the timeline has no width
    const double change = seconds - applied_;
    live_ = seconds;
    applied_ = seconds;
    return change == 0 ? std::nullopt : std::optional(change);
}

} // namespace orvane
