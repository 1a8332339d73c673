#include "OrvaneSyncCore/Services/Timeline/FrameAccumulator.h"

#include <algorithm>
#include <cmath>

namespace orvane {

int takeWhole(double& remainder, double delta) {
    constexpr double most = 1e6;
    if (std::isfinite(delta)) remainder += std::clamp(delta, -most, most);
    const double whole = std::trunc(remainder);
    remainder -= whole;
    return static_cast<int>(whole);
}

int FrameAccumulator::frames(double forDeltaY, bool hasPreciseDeltas) {
    constexpr double precise = 0.25;
    return takeWhole(remainder, hasPreciseDeltas ? forDeltaY * precise : forDeltaY);
}

} // namespace orvane
