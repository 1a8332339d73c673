#pragma once

#include "Timecode/Fraction.h"
#include "Timecode/TimecodeFrameRate.h"

#include <cstdint>
#include <optional>

namespace orvane {

/// The rate that a number of frames per second means: the nearest rate of timecode within 0.05 %
/// (23.976, 23.98 and 59.95 are 24000/1001, 24000/1001 and 60000/1001; 24 and 23.976 differ by 0.1 %, so
/// they are never confused), else the number itself (12.5 is 25/2). Every conversion between seconds and
/// frames uses the rate that this returns.
///
/// In lowest terms, numerator and denominator below 2^31, the limit of the time scales of documents and
/// movies. A number that is not finite, not above 0 or too small or large for that gives 24.
Fraction exactRate(double fps);
/// The same as a number; a number that is no rate of timecode is returned unchanged.
double exactRateValue(double fps);

namespace timecodeRate {
/// The rate of timecode that a number means by `exactRate`, in drop frame if there is a drop-frame case of
/// it. Nothing for a number that is no rate of timecode.
std::optional<TimecodeFrameRate> nearest(double fps, bool drop);
} // namespace timecodeRate

/// A count of frames that was calculated in floating point, truncated to whole frames towards zero after
/// adding 0.00001 of a frame with its sign: 864049.9999999999 is 864050, 23.99998 is 23. Nothing beyond 2^53
/// frames, where a double cannot represent every whole number, and for NaN.
std::optional<std::int64_t> truncatedFrames(double frames);

} // namespace orvane
