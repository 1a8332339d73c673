#pragma once

#include <string>

namespace orvane {

/// The ruler of the timeline. Pure; any thread.
namespace TimelineRuler {

/// Seconds between ticks for `duration` seconds over `width` points: ticks are at least 60 points apart, and
/// at most 5 minutes.
double rulerInterval(double duration, double width);

/// Minutes and seconds, such as "2:05"; negative times have a minus sign.
std::string formatTime(double seconds);

} // namespace TimelineRuler
} // namespace orvane
