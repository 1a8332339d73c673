#pragma once

#include "Timecode/TimecodeFrameRate.h"

#include <string>

namespace orvane {

/// At most three significant digits: 23.976 reads "24", 119.88 reads "120", 1200 reads "1.2e+03".
std::string threeDigits(double value);
/// A rate as names and keywords show it: whole rates in full, others with three digits.
std::string rateText(double framesPerSecond);
/// "23.976", "29.97DF": the form of the options.
std::string rateText(TimecodeFrameRate rate);

} // namespace orvane
