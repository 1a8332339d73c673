#include "OrvaneSyncCore/Utilities/RateText.h"

#include "Platform/Text.h"

#include <cmath>

namespace orvane {

using platform::text::formatted;

std::string threeDigits(double value) { return formatted("%.3g", value); }

std::string rateText(double framesPerSecond) {
    const bool isWhole = framesPerSecond == std::round(framesPerSecond);
    return isWhole ? formatted("%.0f", framesPerSecond) : threeDigits(framesPerSecond);
}

std::string rateText(TimecodeFrameRate rate) {
    std::string text = formatted("%.6g", std::round(timecodeRate::rate(rate).doubleValue() * 1000) / 1000);
    if (text == "29.97" || text == "59.94" || text == "119.88")
        text += timecodeRate::isDrop(rate) ? "DF" : "NDF";
    return text;
}

} // namespace orvane
