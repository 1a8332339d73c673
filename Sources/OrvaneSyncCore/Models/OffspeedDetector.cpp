#include "OrvaneSyncCore/Models/OffspeedDetector.h"

#include "Timecode/ExactRate.h"

#include <algorithm>
#include <cmath>

namespace orvane {

SourceRateDomain deriveSourceRateDomain(std::optional<double> fileRate, std::optional<double> sensor,
                                        std::optional<double> project) {
    using OffspeedDetector::ratesDifferSignificantly;
    if (!fileRate || !project) return SourceRateDomain::sensorRate;
    if (sensor && !ratesDifferSignificantly(fileRate, sensor)) return SourceRateDomain::sensorRate;
    if (ratesDifferSignificantly(fileRate, project)) return SourceRateDomain::sensorRate;
    return SourceRateDomain::conformedExternally;
}

bool OffspeedDetector::ratesDifferSignificantly(std::optional<double> a, std::optional<double> b) {
    if (!a || !b || !(*a > 0) || !(*b > 0)) return false;
    return std::abs(std::max(*a, *b) / std::min(*a, *b) - 1) > rateMatchTolerance;
}

double OffspeedDetector::slowMotionFactor(std::optional<double> sensor, std::optional<double> project) {
    return sensor && project && *project > 0 ? exactRateValue(*sensor) / exactRateValue(*project) : 1.0;
}

bool OffspeedDetector::isOffspeed(std::optional<double> sensor, std::optional<double> project) {
    return sensor && project && *project > 0 && std::abs(*sensor / *project - 1) > offspeedThreshold;
}

bool OffspeedDetector::isHalfRate(std::optional<double> counted, std::optional<double> picture) {
    constexpr double sameFactor = 0.002; // relative; a timecode of 30 belongs to 59.94 as well as to 60
    return counted && picture && *counted > 0 && std::abs(*picture / *counted / 2 - 1) <= sameFactor;
}

// A vendor's flag without both rates gives no factor, so it is ignored.
std::optional<OffspeedConfidence> OffspeedDetector::classify(std::optional<double> sensorFrameRate,
                                                             std::optional<double> projectFrameRate,
                                                             [[maybe_unused]] bool vendorConfirmed) {
    if (!sensorFrameRate || !projectFrameRate || !(*sensorFrameRate > 0) || !(*projectFrameRate > 0))
        return std::nullopt;
    if (!ratesDifferSignificantly(sensorFrameRate, projectFrameRate)) return std::nullopt;
    const double factor = *sensorFrameRate / *projectFrameRate;
    return std::isfinite(factor) ? std::optional(OffspeedConfidence::confirmed(true, factor)) : std::nullopt;
}

JSON toJSON(const OffspeedConfidence& confidence) {
    JSON payload;
    payload.set("factor", confidence.factor);
    if (confidence.kind == OffspeedConfidence::Kind::suspectedUnconfirmed)
        return caseObject("suspectedUnconfirmed", std::move(payload));
    payload.set("isOffspeed", confidence.isOffspeed);
    return caseObject("confirmed", std::move(payload));
}

template <>
OffspeedConfidence fromJSON<OffspeedConfidence>(const JSON& json) {
    const auto& [name, payload] = singleCase(json);
    if (name == "confirmed")
        return OffspeedConfidence::confirmed(required<bool>(payload, "isOffspeed"),
                                             required<double>(payload, "factor"));
    if (name == "suspectedUnconfirmed")
        return OffspeedConfidence::suspectedUnconfirmed(required<double>(payload, "factor"));
    throw DecodingError("unknown case \"" + name + "\"");
}

JSON toJSON(SourceRateDomain domain) {
    return domain == SourceRateDomain::sensorRate ? "sensorRate" : "conformedExternally";
}

template <>
SourceRateDomain fromJSON<SourceRateDomain>(const JSON& json) {
    const auto text = fromJSON<std::string>(json);
    if (text == "sensorRate") return SourceRateDomain::sensorRate;
    if (text == "conformedExternally") return SourceRateDomain::conformedExternally;
    throw DecodingError("unknown case \"" + text + "\"");
}

} // namespace orvane
