#pragma once

#include <string>

namespace orvane {

/// The ruler of the timeline. Pure; any thread.
namespace TimelineRuler {

/// Seconds between ticks for `duration` seconds over `width` points. Up to 5 minutes the ticks are at least
/// 60 points apart; where these would be too close, the answer is a minute.
double rulerInterval(double duration, double width);

/// Seconds between the ticks that are drawn: `interval`, or as many minutes, half hours and hours as keep the
/// labels 60 points apart. `pointsPerSecond` is above 0.
double legibleInterval(double interval, double pointsPerSecond);

/// Minutes and seconds, such as "2:05"; negative times have a minus sign.
std::string formatTime(double seconds);

/// The label of a moment: as `formatTime`, from one hour on with hours, such as "1:30:00".
std::string labelText(double seconds);

} // namespace TimelineRuler
} // namespace orvane
