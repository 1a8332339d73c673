#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioPredictor.h"

#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "Platform/Files.h"

#include <algorithm>
#include <stdexcept>

namespace orvane {

namespace {

constexpr double riskyGainDB = 12.0;

// The estimate without a calibration.
constexpr double voiceIsolationDeltaDB = -6.0;
constexpr double largestLoudnessDeltaDB = 15.0;
constexpr double loudnessDBPerPercent = 0.1;
constexpr double uniformityDBPerPercent = 0.05;

double estimatedDelta(const SmartAudioPreset& preset) {
    const double isolation = preset.voiceIsolation >= 1 ? voiceIsolationDeltaDB : 0.0;
    // The loudness effect needs both to have an effect.
    if (preset.loudness == 0 || preset.uniformity == 0) return isolation;
    return isolation + std::min(largestLoudnessDeltaDB, preset.loudness * loudnessDBPerPercent +
                                                            preset.uniformity * uniformityDBPerPercent);
}

/// Sum of the squared differences of the three percentages.
double distance(const CalibrationPerm& perm, const SmartAudioPreset& preset) {
    const double voiceIsolation = static_cast<double>(perm.voiceIsoAmount) - preset.voiceIsolation;
    const double loudness = static_cast<double>(perm.loudnessAmount) - preset.loudness;
    const double uniformity = static_cast<double>(perm.uniformity) - preset.uniformity;
    return voiceIsolation * voiceIsolation + loudness * loudness + uniformity * uniformity;
}

} // namespace

SmartAudioPredictor SmartAudioPredictor::loadingFromDisk() {
    try {
        return SmartAudioPredictor(
            fromJSON<CalibrationResult>(JSON::parse(platform::files::readText(calibrationPath()))));
    } catch (const std::runtime_error&) { // missing, not JSON, or not a calibration
        return SmartAudioPredictor();
    }
}

std::string SmartAudioPredictor::calibrationPath() {
    return AppStorageHelper::calibrationDirectory() + "/calibration.json";
}

bool SmartAudioPredictor::isCalibrated() const { return calibration_ && !calibration_->measurements.empty(); }

double SmartAudioPredictor::lookupLUFSDelta(const SmartAudioPreset& preset) const {
    if (!isCalibrated()) return estimatedDelta(preset);
    // An exact match has the distance 0, so it is the nearest.
    const auto nearest = std::ranges::min_element(
        calibration_->measurements, {}, [&](const auto& one) { return distance(one.perm, preset); });
    return nearest->lufsDeltaDB;
}

SmartAudioPrediction SmartAudioPredictor::predict(double clipLUFS, const SmartAudioPreset& preset,
                                                  double targetLUFS) const {
    SmartAudioPrediction prediction;
    prediction.clipLUFS = clipLUFS;
    prediction.preset = preset;
    prediction.targetLUFS = targetLUFS;
    prediction.postProcessingLUFS = clipLUFS + lookupLUFSDelta(preset);
    prediction.masterGainDB = targetLUFS - prediction.postProcessingLUFS;
    prediction.predictedLUFS = prediction.postProcessingLUFS + prediction.masterGainDB;
    prediction.clippingRisk = prediction.masterGainDB > riskyGainDB;
    return prediction;
}

JSON toJSON(const SmartAudioPrediction& prediction) {
    JSON json;
    json.set("clipLUFS", prediction.clipLUFS);
    json.set("preset", toJSON(prediction.preset));
    json.set("targetLUFS", prediction.targetLUFS);
    json.set("postProcessingLUFS", prediction.postProcessingLUFS);
    json.set("masterGainDB", prediction.masterGainDB);
    json.set("predictedLUFS", prediction.predictedLUFS);
    json.set("clippingRisk", prediction.clippingRisk);
    return json;
}

} // namespace orvane
