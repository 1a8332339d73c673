#pragma once

#include "Platform/Playback/Player.h"

namespace orvane {

using platform::PitchAlgorithm;

/// How the sound of a clip is played at a speed.
struct AudioRenderPlan {
    bool isAudible = false;
    PitchAlgorithm algorithm = PitchAlgorithm::timeDomain;
    bool isPitchCorrected = false;

    static const AudioRenderPlan silent, normalSpeed, fastSpeed, slowMotion;
    bool operator==(const AudioRenderPlan&) const = default;
};
inline constexpr AudioRenderPlan AudioRenderPlan::silent{},
    AudioRenderPlan::normalSpeed{true, PitchAlgorithm::timeDomain, true},
    AudioRenderPlan::fastSpeed{true, PitchAlgorithm::spectral, true},
    AudioRenderPlan::slowMotion{true, PitchAlgorithm::varispeed, false};

/// Pure; any thread.
namespace ShuttleAudioEngine {

/// There is sound up to twice the normal speed, in both directions. `rate`: signed, 0 when paused.
AudioRenderPlan planForShuttleRate(double rate);

} // namespace ShuttleAudioEngine
} // namespace orvane
