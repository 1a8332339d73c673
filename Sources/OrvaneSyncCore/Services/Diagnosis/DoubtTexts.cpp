#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"

#include "OrvaneSyncCore/Models/Date.h"
#include "OrvaneSyncCore/Models/SourceCorrections.h"
#include "OrvaneSyncCore/Services/Matching/ClipRate.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <chrono>
#include <cmath>

namespace orvane {

long long framesOf(double seconds, const MediaAsset& video) {
    return std::llround(seconds * clipRate(video, rateWithoutAny));
}

std::string framesText(double seconds, const MediaAsset& video) {
    return counted(framesOf(seconds, video), "frame", "frames");
}

std::string dayText(long sinceEpoch) {
    const std::string text = iso8601(std::chrono::sys_days(std::chrono::days(sinceEpoch)));
    return text.substr(0, text.find('T'));
}

std::string spanText(double seconds) {
    constexpr double aMinute = 60, anHour = 3600, hoursADay = 24;
    if (seconds < aMinute) return formatted("%.1f s", seconds);
    const double whole = std::round(seconds);
    const std::string rest = formatted(" min %02.0f s", std::fmod(whole, aMinute));
    const double minutes = std::floor(std::fmod(whole, anHour) / aMinute);
    if (whole < anHour) return formatted("%.0f", minutes) + rest;
    const double hours = std::floor(whole / anHour);
    const bool hasDays = hours >= 2 * hoursADay;
    return (hasDays ? formatted("%.0f d ", std::floor(hours / hoursADay)) : "") +
           formatted("%.0f h ", hasDays ? std::fmod(hours, hoursADay) : hours) +
           formatted("%02.0f", minutes) + rest;
}

std::string offsetSpanText(double seconds, TimecodeFrameRate rate) {
    constexpr double aMinute = 60, aDay = 86400, tenths = 10, hundredths = 100, smallest = 0.001;
    const double fps = timecodeRate::frameRateForRealTimeCalculation(rate);
    const double framed = std::round(std::round(seconds * fps) / fps * hundredths) / hundredths;
    std::string span = spanText(framed);
    if (framed < aMinute) {
        const bool isTenth = std::abs(framed * tenths - std::round(framed * tenths)) < smallest;
        return isTenth ? span : formatted("%.2f s", framed);
    }
    if (seconds >= aDay) return span;
    const std::string labels = offsetText(seconds, rate);
    // Timecode of 25 frames states whole seconds as they are.
    return labels == offsetText(std::round(seconds), TimecodeFrameRate::fps25) ? span
                                                                               : span + " (" + labels + ")";
}

} // namespace orvane
