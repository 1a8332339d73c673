#include "OrvaneSyncCore/Services/Diagnosis/WrittenTimes.h"

#include "OrvaneSyncCore/Utilities/Day.h"

#include <algorithm>
#include <cmath>

namespace orvane {

std::optional<double> writtenSeconds(const MediaAsset& video) {
    for (const auto& date : {video.localCreatedDate(), video.headerDate})
        if (date && secondOfDay(*date) != 0)
            return static_cast<double>(dayNumber(*date)) * secondsADay + secondOfDay(*date);
    return std::nullopt;
}

bool isWrittenOn(const MediaAsset& video, const FilePlace& place, long day) {
    constexpr double closeSeconds = 300; // typical difference between cameras' clocks and timecode
    const auto written = writtenSeconds(video);
    if (!written) return false;
    const double into = *written - static_cast<double>(day) * secondsADay;
    return std::abs(into - place.range.startSeconds) <= closeSeconds ||
           std::abs(into - place.range.endSeconds) <= closeSeconds;
}

bool countsFromZero(const MediaAsset& video) {
    const auto isOther = [](char c) { return c >= '1' && c <= '9'; };
    if (video.bextTimeReference.value_or(0) != 0 || !video.startTimecodeString ||
        std::ranges::any_of(*video.startTimecodeString, isOther))
        return false;
    constexpr double nearMidnight = 300;
    const auto seconds = writtenSeconds(video);
    return !seconds || std::abs(std::remainder(*seconds, secondsADay)) > nearMidnight;
}

} // namespace orvane
