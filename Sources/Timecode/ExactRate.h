#pragma once

#include "Timecode/Fraction.h"
#include "Timecode/TimecodeFrameRate.h"

#include <cstdint>
#include <optional>

namespace orvane {

/// The rate that a number of frames per second stands for: the nearest rate of timecode within 0.05 %
/// (23.976, 23.98 and 59.95 are 24000/1001, 24000/1001 and 60000/1001; 24 and 23.976 differ by 0.1 % and
/// never meet), else the number itself (12.5 is 25/2). Whoever turns seconds into frames or back passes its
/// rate through here.
///
/// In lowest terms, numerator and denominator below 2^31, which the time scales of documents and movies hold.
/// A number that is not finite, not above 0 or too small or large for that is 24.
Fraction exactRate(double fps);
/// The same as a number; any number that stands for no rate of timecode is returned as it is.
double exactRateValue(double fps);

namespace timecodeRate {
/// The rate of timecode that a number stands for by `exactRate`, in drop frame if there is such a case of it.
/// Nothing for a number that is only itself.
std::optional<TimecodeFrameRate> nearest(double fps, bool drop);
} // namespace timecodeRate

/// A count of frames that was calculated in floating point, cut to whole frames towards zero after 0.00001 of
/// a frame was added with its sign: 864049.9999999999 is 864050, 23.99998 stays 23. Nothing beyond 2^53
/// frames, from where a double no longer counts single ones, and for no number.
std::optional<std::int64_t> truncatedFrames(double frames);

} // namespace orvane
