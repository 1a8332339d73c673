#include "OrvaneSyncCore/Services/Timeline/ClipPlaces.h"

#include <algorithm>

namespace orvane {

double ClipPlaces::ofAnchor(double anchorInAudio, double audioOffsetSeconds, double clipDuration) {
    return std::max(std::min(anchorInAudio + audioOffsetSeconds, clipDuration),
                    std::min(audioOffsetSeconds, 0.0));
}

double ClipPlaces::ofClick(double secondsInAudio, double audioDuration, double audioOffsetSeconds) {
    return std::clamp(secondsInAudio, 0.0, std::max(audioDuration, 0.0)) + audioOffsetSeconds;
}

} // namespace orvane
