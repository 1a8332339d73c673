#include "OrvaneSyncCore/Services/Matching/ClipRate.h"

#include "OrvaneSyncCore/Services/Matching/ProjectFrameRateResolver.h"
#include "Timecode/ExactRate.h"

#include <cmath>

namespace orvane {

bool isUsableRate(double fps) {
    constexpr double highest = 1.0e6;
    return std::isfinite(fps) && std::round(fps) >= 1 && fps <= highest;
}

double usableRate(std::optional<double> first, std::optional<double> second, std::optional<double> third) {
    for (const auto& rate : {first, second, third})
        if (rate && isUsableRate(*rate)) return exactRateValue(*rate);
    return rateWithoutAny;
}

double clipRate(const MediaAsset& video, double projectRate) {
    return usableRate(video.projectFrameRate, video.frameRate, projectRate);
}

double ClipRates::of(const MediaAsset& video) const {
    const auto isUsable = [](const std::optional<double>& rate) { return rate && isUsableRate(*rate); };
    if (!projectRate_ && !isUsable(video.projectFrameRate) && !isUsable(video.frameRate))
        projectRate_ = ProjectFrameRateResolver::resolve(clips_, chosenRate_).fps;
    return clipRate(video, projectRate_.value_or(rateWithoutAny));
}

} // namespace orvane
