#pragma once

#include <optional>
#include <span>
#include <vector>

namespace orvane {

/// Finds where sound starts in a given loudness envelope. Times are seconds on the envelope's axis; lists of
/// onsets are ascending. Pure; any thread.
namespace OnsetDetector {

/// The gap that is used for waveforms.
inline constexpr double waveformGapSeconds = 0.3;
inline constexpr float waveformThresholdMultiplier = 2.5F;
/// The distance from an onset within which a drag snaps to it.
inline constexpr double dragThresholdSeconds = 0.25;
/// The shortest jump to the next or previous onset.
inline constexpr double jumpGapSeconds = 0.02;

/// `rms` is linear, one value for each bin. An onset is a bin that rises above `thresholdMultiplier` times
/// the level of the quietest fifth (and above 0.02), at least `minGapSeconds` after the onset before it.
std::vector<double> detect(std::span<const float> rms, double binsPerSecond, double minGapSeconds,
                           float thresholdMultiplier);

/// The nearest onset if it is nearer than the threshold, otherwise `time` itself.
double snap(double time, std::span<const double> onsets, double thresholdSeconds);

/// At a distance of more than `minGapSeconds`.
std::optional<double> nearestOnsetBefore(double time, std::span<const double> onsets, double minGapSeconds);
std::optional<double> nearestOnsetAfter(double time, std::span<const double> onsets, double minGapSeconds);

} // namespace OnsetDetector
} // namespace orvane
