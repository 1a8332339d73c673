#pragma once

namespace orvane {

/// The one axis on which the multicam view draws all cameras: the clock of their recording, in seconds, over
/// a width in pixels. Pure; any thread. Each gives 0 where an argument is not finite, or a width or total not
/// above 0.
namespace ClusterTimelineAxis {

/// From 0 to 1: where a moment of a camera's composition lies, given the camera's sync offset.
double progress(double compositionSeconds, double syncOffsetSeconds, double totalSeconds);
/// From 0 to `totalSeconds`.
double audioClockSeconds(double atX, double width, double totalSeconds);
/// From 0 to `width`; the inverse of `audioClockSeconds`.
double x(double forAudioClockSeconds, double width, double totalSeconds);

} // namespace ClusterTimelineAxis
} // namespace orvane
