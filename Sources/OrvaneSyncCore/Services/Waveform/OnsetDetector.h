#pragma once

#include <optional>
#include <span>
#include <vector>

namespace orvane {

/// Where sound starts, in a loudness envelope that is there already. Times are seconds on the envelope's
/// axis; lists of onsets ascend. Pure; any thread.
namespace OnsetDetector {

/// As waveforms are searched.
inline constexpr double waveformGapSeconds = 0.3;
inline constexpr float waveformThresholdMultiplier = 2.5F;
/// How near an onset has to be for a drag to snap to it.
inline constexpr double dragThresholdSeconds = 0.25;
/// How far a jump to the next or previous onset goes at least.
inline constexpr double jumpGapSeconds = 0.02;

/// `rms` is linear, one value a bin. An onset is a bin that rises over `thresholdMultiplier` times the level
/// of the quietest fifth (and over 0.02), `minGapSeconds` or more behind the onset before it.
std::vector<double> detect(std::span<const float> rms, double binsPerSecond, double minGapSeconds,
                           float thresholdMultiplier);

/// The nearest onset if it is nearer than the threshold, else the time itself.
double snap(double time, std::span<const double> onsets, double thresholdSeconds);

/// More than `minGapSeconds` away.
std::optional<double> nearestOnsetBefore(double time, std::span<const double> onsets, double minGapSeconds);
std::optional<double> nearestOnsetAfter(double time, std::span<const double> onsets, double minGapSeconds);

} // namespace OnsetDetector
} // namespace orvane
