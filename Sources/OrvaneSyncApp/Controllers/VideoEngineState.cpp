#include "OrvaneSyncApp/Controllers/VideoEngineState.h"

#include "OrvaneSyncCore/Services/Playback/ScrubBlipAudio.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"

#include <cmath>

namespace orvane {

platform::MediaTime PlayheadState::frameLength() const {
    const Fraction rate = ScrubBlipAudio::steppingFrameRate(frameRate);
    return {rate.denominator(), rate.numerator()};
}

std::string PlayheadState::timecodeString() const {
    const double moment = seconds() + startTimecodeSeconds;
    if (!std::isfinite(moment) || moment < 0) return "00:00:00:00";
    return TimecodeUtils::secondsToTC(moment,
                                      timecodeRate ? *timecodeRate : TimecodeUtils::frameRate(frameRate));
}

} // namespace orvane
