#pragma once

#include "OrvaneSyncCore/Models/JSONCoding.h"

#include <optional>
#include <string>

namespace orvane {

/// How certain the probe is that a clip was shot at another speed than the project's. `factor` is sensor rate
/// over project rate.
struct OffspeedConfidence {
    enum class Kind { confirmed, suspectedUnconfirmed };
    Kind kind = Kind::confirmed;
    bool isOffspeed = false; ///< payload of `confirmed` only
    double factor = 1.0;

    static OffspeedConfidence confirmed(bool isOffspeed, double factor) {
        return {Kind::confirmed, isOffspeed, factor};
    }
    static OffspeedConfidence suspectedUnconfirmed(double factor) {
        return {Kind::suspectedUnconfirmed, false, factor};
    }
    bool operator==(const OffspeedConfidence&) const = default;
};

/// The rate of a file's own timeline. With `sensorRate` the file's duration is the real capture time; with
/// `conformedExternally` it is longer by the slow-motion factor.
enum class SourceRateDomain { sensorRate, conformedExternally };

SourceRateDomain deriveSourceRateDomain(std::optional<double> fileRate, std::optional<double> sensor,
                                        std::optional<double> project);

/// Two tolerances, not interchangeable: `rateMatchTolerance` decides whether two rates are the same rate,
/// `offspeedThreshold` whether a clip is treated as offspeed. Rates are frames per second.
namespace OffspeedDetector {

constexpr double rateMatchTolerance = 0.02;
constexpr double offspeedThreshold = 0.05;

bool ratesDifferSignificantly(std::optional<double> a, std::optional<double> b);
double slowMotionFactor(std::optional<double> sensor, std::optional<double> project);
/// Whether the timecode counts every second frame of the picture (25 of 50, 29.97 or 30 of 59.94). Cameras do
/// this if their timecode has at most 30 frames a second; it is not slow motion.
bool isHalfRate(std::optional<double> counted, std::optional<double> picture);
/// |sensor / project - 1| above `offspeedThreshold`, both rates present and the project rate above 0.
bool isOffspeed(std::optional<double> sensor, std::optional<double> project);
std::optional<OffspeedConfidence> classify(std::optional<double> sensorFrameRate,
                                           std::optional<double> projectFrameRate, bool vendorConfirmed);

} // namespace OffspeedDetector

JSON toJSON(const OffspeedConfidence& confidence);
template <>
OffspeedConfidence fromJSON<OffspeedConfidence>(const JSON& json);
JSON toJSON(SourceRateDomain domain);
template <>
SourceRateDomain fromJSON<SourceRateDomain>(const JSON& json);

} // namespace orvane
