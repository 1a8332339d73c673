#pragma once

#include "OrvaneSyncCore/Models/SmartAudioConfig.h"
#include "OrvaneSyncCore/Services/SmartAudio/CalibrationResult.h"

#include <optional>
#include <string>
#include <utility>

namespace orvane {

/// How loud one clip comes out.
struct SmartAudioPrediction {
    double clipLUFS = 0; ///< of the raw clip
    SmartAudioPreset preset;
    double targetLUFS = 0;
    double postProcessingLUFS = 0; ///< behind the preset's effects
    double masterGainDB = 0;       ///< what is then missing to the target
    double predictedLUFS = 0;
    bool clippingRisk = false; ///< the gain is above 12 dB

    bool operator==(const SmartAudioPrediction&) const = default;
};

/// Forecasts how far the effects of a preset move a clip's level: as measured by the calibration where there
/// is one, by a built-in estimate otherwise. Pure but for `loadingFromDisk`; any thread.
class SmartAudioPredictor {
  public:
    explicit SmartAudioPredictor(std::optional<CalibrationResult> calibration = {})
        : calibration_(std::move(calibration)) {}
    /// With the stored calibration; without one where the file is missing or does not decode.
    static SmartAudioPredictor loadingFromDisk();

    SmartAudioPrediction predict(double clipLUFS, const SmartAudioPreset& preset, double targetLUFS) const;
    double lookupLUFSDelta(const SmartAudioPreset& preset) const; ///< dB
    bool isCalibrated() const;
    const std::optional<CalibrationResult>& calibration() const { return calibration_; }
    /// Where the stored calibration lies.
    static std::string calibrationPath();

  private:
    std::optional<CalibrationResult> calibration_;
};

JSON toJSON(const SmartAudioPrediction& prediction);

} // namespace orvane
