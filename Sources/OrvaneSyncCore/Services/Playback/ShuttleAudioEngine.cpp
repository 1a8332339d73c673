#include "OrvaneSyncCore/Services/Playback/ShuttleAudioEngine.h"

#include <cmath>

namespace orvane {

AudioRenderPlan ShuttleAudioEngine::planForShuttleRate(double rate) {
    constexpr double tolerance = 0.001, fastest = 2;
    const double magnitude = std::abs(rate);
    if (magnitude <= tolerance) return AudioRenderPlan::silent;
    if (std::abs(magnitude - 1) <= tolerance) return AudioRenderPlan::normalSpeed;
    return magnitude <= fastest + tolerance ? AudioRenderPlan::fastSpeed : AudioRenderPlan::silent;
}

} // namespace orvane
