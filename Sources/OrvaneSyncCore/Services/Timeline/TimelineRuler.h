#pragma once

#include <string>

namespace orvane {

/// The ruler of the timeline. Pure; any thread.
namespace TimelineRuler {

/// Seconds from tick to tick for `duration` seconds over `width` points: at least 60 points lie between two
/// ticks, up to ticks of 5 minutes.
double rulerInterval(double duration, double width);

/// Minutes and seconds, such as "2:05"; with a minus sign before the clip.
std::string formatTime(double seconds);

} // namespace TimelineRuler
} // namespace orvane
