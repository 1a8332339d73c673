#pragma once

#include "OrvaneSyncCore/Models/JSONCoding.h"

#include <optional>
#include <string>

namespace orvane {

/// How sure the probe is that a clip was shot off the project's speed. `factor` is sensor rate over project
/// rate.
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

/// Which rate a file's own timeline runs at. With `sensorRate` the file's duration is the real capture time;
/// with `conformedExternally` it is longer by the slow-motion factor.
enum class SourceRateDomain { sensorRate, conformedExternally };

SourceRateDomain deriveSourceRateDomain(std::optional<double> fileRate, std::optional<double> sensor,
                                        std::optional<double> project);

/// Two tolerances are in use and not interchangeable: `rateMatchTolerance` decides whether two rates are the
/// same rate at all, `offspeedThreshold` whether a clip is treated as offspeed. Rates are frames per second.
namespace OffspeedDetector {

constexpr double rateMatchTolerance = 0.02;
constexpr double offspeedThreshold = 0.05;

bool ratesDifferSignificantly(std::optional<double> a, std::optional<double> b);
double slowMotionFactor(std::optional<double> sensor, std::optional<double> project);
/// Whether a timecode counts each second frame of a picture (25 of 50, 29.97 or 30 of 59.94), as cameras do
/// that have no timecode of more than 30 frames a second. That is no slow motion.
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
