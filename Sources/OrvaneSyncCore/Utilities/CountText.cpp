#include "OrvaneSyncCore/Utilities/CountText.h"

#include "OrvaneSyncCore/Utilities/Day.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace orvane {

std::string counted(long long count, std::string_view one, std::string_view many) {
    return std::to_string(count) + " " + std::string(count == 1 || count == -1 ? one : many);
}

std::string secondsText(double seconds) { return formatted("%.3f s", seconds); }

std::string megabytesText(double bytes) {
    constexpr double megabyte = 1e6;
    return formatted("%.1f MB", bytes / megabyte);
}

std::string clockText(double seconds) {
    constexpr double longest = 1e9;
    if (!(seconds >= 0 && seconds < longest)) return "";
    const auto whole = static_cast<long long>(std::llround(seconds));
    std::array<char, 48> text{};
    if (whole >= 3600)
        std::snprintf(text.data(), text.size(), "%lld:%02lld:%02lld", whole / 3600, whole / 60 % 60,
                      whole % 60);
    else
        std::snprintf(text.data(), text.size(), "%lld:%02lld", whole / 60, whole % 60);
    return text.data();
}

std::string timeOfDayText(double seconds) {
    const double inDay = std::fmod(std::floor(seconds), secondsADay);
    const long whole = std::lround(inDay < 0 ? inDay + secondsADay : inDay);
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%02ld:%02ld:%02ld", whole / 3600, whole / 60 % 60, whole % 60);
    return text.data();
}

std::string fineClockText(double seconds) {
    const long long hundredths = std::llround(seconds * 100);
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%02lld:%02lld.%02lld", hundredths / 6000, hundredths / 100 % 60,
                  hundredths % 100);
    return text.data();
}

} // namespace orvane
