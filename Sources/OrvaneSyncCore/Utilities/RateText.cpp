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

} // namespace orvane
