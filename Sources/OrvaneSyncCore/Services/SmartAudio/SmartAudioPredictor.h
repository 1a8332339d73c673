#pragma once

#include "OrvaneSyncCore/Models/SmartAudioConfig.h"
#include "OrvaneSyncCore/Services/SmartAudio/CalibrationResult.h"

#include <optional>
#include <string>
#include <utility>

namespace orvane {

/// The expected loudness of one clip.
struct SmartAudioPrediction {
    double clipLUFS = 0; ///< of the unprocessed clip
    SmartAudioPreset preset;
    double targetLUFS = 0;
    double postProcessingLUFS = 0; ///< after the preset's effects
    double masterGainDB = 0;       ///< difference from there to the target
    double predictedLUFS = 0;
    bool clippingRisk = false; ///< the gain is above 12 dB

    bool operator==(const SmartAudioPrediction&) const = default;
};

/// Predicts by how much the effects of a preset change a clip's level: from the stored calibration if there
/// is one, otherwise by a built-in estimate. Pure except for `loadingFromDisk`; any thread.
class SmartAudioPredictor {
  public:
    explicit SmartAudioPredictor(std::optional<CalibrationResult> calibration = {})
        : calibration_(std::move(calibration)) {}
    /// Uses the stored calibration; none if the file is missing or cannot be decoded.
    static SmartAudioPredictor loadingFromDisk();

    SmartAudioPrediction predict(double clipLUFS, const SmartAudioPreset& preset, double targetLUFS) const;
    double lookupLUFSDelta(const SmartAudioPreset& preset) const; ///< dB
    bool isCalibrated() const;
    const std::optional<CalibrationResult>& calibration() const { return calibration_; }
    /// The path of the stored calibration.
    static std::string calibrationPath();

  private:
    std::optional<CalibrationResult> calibration_;
};

JSON toJSON(const SmartAudioPrediction& prediction);

} // namespace orvane
