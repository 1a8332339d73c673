#pragma once

namespace orvane {

/// Adds to what was left over, takes the whole part of the sum, towards 0, and leaves the fraction. A delta
/// that is no finite number counts as 0, and no event gives more than a million.
int takeWhole(double& remainder, double delta);

/// Turns scrolling over the picture into steps of frames.
struct FrameAccumulator {
    double remainder = 0; ///< frames, above -1 and below 1

    /// Frames to step, backwards where negative. `hasPreciseDeltas`: of a trackpad, whose deltas count a
    /// quarter; a wheel's count as they are.
    int frames(double forDeltaY, bool hasPreciseDeltas);
};

} // namespace orvane
