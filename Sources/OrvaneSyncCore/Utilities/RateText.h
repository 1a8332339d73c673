#pragma once

#include "Timecode/TimecodeFrameRate.h"

#include <string>

namespace orvane {

/// At most three significant digits: 23.976 reads "24", 119.88 reads "120", 1200 reads "1.2e+03".
std::string threeDigits(double value);
/// A rate as names and keywords say it: whole rates in full, others by three digits.
std::string rateText(double framesPerSecond);
/// "23.976", "29.97DF", as options take it.
std::string rateText(TimecodeFrameRate rate);

} // namespace orvane
