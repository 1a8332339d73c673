#pragma once

#include "OrvaneSyncCore/Models/JSONCoding.h"

#include <string>
#include <vector>

namespace orvane {

/// One combination of effect settings, in whole percent.
struct CalibrationPerm {
    int voiceIsoAmount = 0;
    int loudnessAmount = 0;
    int uniformity = 0;

    bool operator==(const CalibrationPerm&) const = default;
};

/// By how much one combination changed the level of the calibration signal, dB and LU.
struct CalibrationMeasurement {
    CalibrationPerm perm;
    double peakDeltaDB = 0;
    double rmsDeltaDB = 0;
    double lufsDeltaDB = 0;
    std::string bouncedFilename;

    bool operator==(const CalibrationMeasurement&) const = default;
};

/// The stored calibration.
struct CalibrationResult {
    Date measuredAt{}; ///< in JSON as seconds since 2001-01-01 00:00:00 UTC
    double sourcePeakDBFS = 0;
    double sourceRMSDBFS = 0;
    double sourceLUFS = 0;
    std::vector<CalibrationMeasurement> measurements;

    bool operator==(const CalibrationResult&) const = default;
};

JSON toJSON(const CalibrationPerm& perm);
JSON toJSON(const CalibrationMeasurement& measurement);
JSON toJSON(const CalibrationResult& result);
template <>
CalibrationPerm fromJSON<CalibrationPerm>(const JSON& json);
template <>
CalibrationMeasurement fromJSON<CalibrationMeasurement>(const JSON& json);
template <>
CalibrationResult fromJSON<CalibrationResult>(const JSON& json);

} // namespace orvane
