#include "OrvaneSyncCore/Utilities/RateText.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace orvane {

namespace {

std::string formatted(const char* format, double value) {
    std::array<char, 400> text{}; // the largest double in full has 309 digits
    std::snprintf(text.data(), text.size(), format, value);
    return text.data();
}

} // namespace

std::string threeDigits(double value) { return formatted("%.3g", value); }

std::string rateText(double framesPerSecond) {
    const bool isWhole = framesPerSecond == std::round(framesPerSecond);
    return isWhole ? formatted("%.0f", framesPerSecond) : threeDigits(framesPerSecond);
}

} // namespace orvane
