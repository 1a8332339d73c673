#pragma once

namespace orvane {

/// Adds `delta` to the remainder, returns the whole part of the sum, rounded towards 0, and keeps the
/// fraction. A delta that is not finite counts as 0, and one delta counts at most a million.
int takeWhole(double& remainder, double delta);

/// Converts scrolling over the picture into frame steps.
struct FrameAccumulator {
    double remainder = 0; ///< frames, above -1 and below 1

    /// The number of frames to step, negative for backwards. `hasPreciseDeltas`: from a trackpad, whose
    /// deltas count a quarter; those of a wheel count fully.
    int frames(double forDeltaY, bool hasPreciseDeltas);
};

} // namespace orvane
