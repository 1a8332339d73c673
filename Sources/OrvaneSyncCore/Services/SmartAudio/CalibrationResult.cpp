#include "OrvaneSyncCore/Services/SmartAudio/CalibrationResult.h"

#include <cmath>

namespace orvane {

namespace {

constexpr std::chrono::sys_days referenceDay = std::chrono::year(2001) / 1 / 1;

double secondsSinceReference(Date date) {
    return std::chrono::duration<double>(date - Date(referenceDay)).count();
}

Date dateSinceReference(double seconds) {
    // What lies beyond a calendar of four-digit years is no date.
    constexpr double furthest = 1e12;
    if (!(std::abs(seconds) < furthest)) throw DecodingError("the date is out of range");
    return Date(referenceDay) + std::chrono::milliseconds(std::llround(seconds * 1000.0));
}

} // namespace

JSON toJSON(const CalibrationPerm& perm) {
    JSON json;
    json.set("voiceIsoAmount", perm.voiceIsoAmount);
    json.set("loudnessAmount", perm.loudnessAmount);
    json.set("uniformity", perm.uniformity);
    return json;
}

template <>
CalibrationPerm fromJSON<CalibrationPerm>(const JSON& json) {
    return {required<int>(json, "voiceIsoAmount"), required<int>(json, "loudnessAmount"),
            required<int>(json, "uniformity")};
}

JSON toJSON(const CalibrationMeasurement& measurement) {
    JSON json;
    json.set("perm", toJSON(measurement.perm));
    json.set("peakDeltaDB", measurement.peakDeltaDB);
    json.set("rmsDeltaDB", measurement.rmsDeltaDB);
    json.set("lufsDeltaDB", measurement.lufsDeltaDB);
    json.set("bouncedFilename", measurement.bouncedFilename);
    return json;
}

template <>
CalibrationMeasurement fromJSON<CalibrationMeasurement>(const JSON& json) {
    return {required<CalibrationPerm>(json, "perm"), required<double>(json, "peakDeltaDB"),
            required<double>(json, "rmsDeltaDB"), required<double>(json, "lufsDeltaDB"),
            required<std::string>(json, "bouncedFilename")};
}

JSON toJSON(const CalibrationResult& result) {
    JSON json;
    json.set("measuredAt", secondsSinceReference(result.measuredAt));
    json.set("sourcePeakDBFS", result.sourcePeakDBFS);
    json.set("sourceRMSDBFS", result.sourceRMSDBFS);
    json.set("sourceLUFS", result.sourceLUFS);
    json.set("measurements", toJSONArray(result.measurements));
    return json;
}

template <>
CalibrationResult fromJSON<CalibrationResult>(const JSON& json) {
    return {dateSinceReference(required<double>(json, "measuredAt")),
            required<double>(json, "sourcePeakDBFS"), required<double>(json, "sourceRMSDBFS"),
            required<double>(json, "sourceLUFS"),
            requiredArray<CalibrationMeasurement>(json, "measurements")};
}

} // namespace orvane
