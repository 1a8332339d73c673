#pragma once

namespace orvane {

/// The time axis that all cameras share in the multicam view: the clock of their recording, in seconds, drawn
/// over a width in pixels. Pure; any thread. Each function returns 0 if an argument is not finite, or if a
/// width or total is not above 0.
namespace ClusterTimelineAxis {

/// The position of a moment of a camera's composition on the axis, from 0 to 1. `syncOffsetSeconds` is the
/// camera's sync offset.
double progress(double compositionSeconds, double syncOffsetSeconds, double totalSeconds);
/// From 0 to `totalSeconds`.
double audioClockSeconds(double atX, double width, double totalSeconds);
/// From 0 to `width`; the inverse of `audioClockSeconds`.
double x(double forAudioClockSeconds, double width, double totalSeconds);

} // namespace ClusterTimelineAxis
} // namespace orvane
