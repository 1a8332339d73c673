#include "OrvaneSyncCore/Services/Playback/ScrubBlipAudio.h"

#include "Timecode/ExactRate.h"

#include <algorithm>
#include <cmath>

namespace orvane {

Fraction ScrubBlipAudio::steppingFrameRate(double frameRate) {
    constexpr double usual = 24, most = 1000;
    const bool isRate = std::isfinite(frameRate) && frameRate > 0;
    return exactRate(isRate ? std::min(frameRate, most) : usual);
}

double ScrubBlipAudio::blipSeconds(double forFrameRate, double ceiling) {
    return std::max(std::min(ceiling, 1 / steppingFrameRate(forFrameRate).doubleValue()), 0.0);
}

} // namespace orvane
