#include "OrvaneSyncCore/Services/SmartAudio/CalibrationResult.h"

#include "OrvaneSyncCore/Models/JSONFields.h"

#include <cmath>

namespace orvane {

namespace {

constexpr std::chrono::sys_days referenceDay = std::chrono::year(2001) / 1 / 1;

double secondsSinceReference(Date date) {
    return std::chrono::duration<double>(date - Date(referenceDay)).count();
}

Date dateSinceReference(double seconds) {
    // Larger values are beyond four-digit years and are no valid date.
    constexpr double furthest = 1e12;
    if (!(std::abs(seconds) < furthest)) throw DecodingError("the date is out of range");
    return Date(referenceDay) + std::chrono::milliseconds(std::llround(seconds * 1000.0));
}

/// Seconds since the reference day, UTC.
template <class T>
struct ReferenceSecondsForm;

template <>
struct ReferenceSecondsForm<Date> {
    static void put(JSON& json, std::string_view key, Date date) {
        json.set(key, secondsSinceReference(date));
    }
    static Date taken(const JSON& json, std::string_view key) {
        return dateSinceReference(required<double>(json, key));
    }
};

} // namespace

template <>
struct JSONFields<CalibrationPerm> {
    static constexpr std::tuple list{JSONField{"voiceIsoAmount", &CalibrationPerm::voiceIsoAmount},
                                     JSONField{"loudnessAmount", &CalibrationPerm::loudnessAmount},
                                     JSONField{"uniformity", &CalibrationPerm::uniformity}};
};

template <>
struct JSONFields<CalibrationMeasurement> {
    static constexpr std::tuple list{JSONField{"perm", &CalibrationMeasurement::perm},
                                     JSONField{"peakDeltaDB", &CalibrationMeasurement::peakDeltaDB},
                                     JSONField{"rmsDeltaDB", &CalibrationMeasurement::rmsDeltaDB},
                                     JSONField{"lufsDeltaDB", &CalibrationMeasurement::lufsDeltaDB},
                                     JSONField{"bouncedFilename", &CalibrationMeasurement::bouncedFilename}};
};

template <>
struct JSONFields<CalibrationResult> {
    static constexpr std::tuple list{
        fieldAs<ReferenceSecondsForm>("measuredAt", &CalibrationResult::measuredAt),
        JSONField{"sourcePeakDBFS", &CalibrationResult::sourcePeakDBFS},
        JSONField{"sourceRMSDBFS", &CalibrationResult::sourceRMSDBFS},
        JSONField{"sourceLUFS", &CalibrationResult::sourceLUFS},
        JSONField{"measurements", &CalibrationResult::measurements}};
};

JSON toJSON(const CalibrationPerm& perm) { return fieldsToJSON(perm); }

template <>
CalibrationPerm fromJSON<CalibrationPerm>(const JSON& json) {
    return madeFromJSON<CalibrationPerm>(json);
}

JSON toJSON(const CalibrationMeasurement& measurement) { return fieldsToJSON(measurement); }

template <>
CalibrationMeasurement fromJSON<CalibrationMeasurement>(const JSON& json) {
    return madeFromJSON<CalibrationMeasurement>(json);
}

JSON toJSON(const CalibrationResult& result) { return fieldsToJSON(result); }

template <>
CalibrationResult fromJSON<CalibrationResult>(const JSON& json) {
    return madeFromJSON<CalibrationResult>(json);
}

} // namespace orvane
