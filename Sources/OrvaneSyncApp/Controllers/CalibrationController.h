#pragma once

#include "OrvaneSyncApp/Controllers/OpenWork.h"
#include "OrvaneSyncCore/Services/Calibration/SmartAudioCalibration.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// What the calibration panel shows.
struct CalibrationState {
    bool hasMatrixOnDisk = false; ///< the source and the document exist
    bool isBuildingMatrix = false;
    bool isMeasuring = false;
    std::optional<SmartAudioCalibration::SourceInfo> sourceInfo;
    std::optional<CalibrationResult> savedCalibration;
    std::optional<CalibrationResult> measurement; ///< not stored yet
    std::vector<std::string> unreadFiles{};       ///< names of bounced files that could not be measured
    std::string problem;                          ///< for people; empty: none
};

/// One line of the results.
struct CalibrationRow {
    enum class Band { small, moderate, large }; ///< below 1 dB, below 6 dB, and above
    struct Difference {
        std::string text; ///< such as "+1.50"
        Band band = Band::small;
    };
    CalibrationPerm perm;
    Difference peak, rms, lufs;
};
/// By Voice Isolation, then loudness, then uniformity.
std::vector<CalibrationRow> calibrationRows(const CalibrationResult& result);

/// Measures what Final Cut Pro's effects do, in steps: builds what is imported there, measures the files
/// bounced there, and stores the result for the forecasts. Belongs to no work. Interface thread.
class CalibrationController {
  public:
    explicit CalibrationController(OpenWork& work);

    const CalibrationState& state() const { return state_; }
    /// Looks at the disk, and measures the source there again if its measurement is not known.
    platform::Task refreshState();
    /// Builds the source (from the recording that the setting names), the picture and the document. A failure
    /// is written to `state().problem`.
    platform::Task buildMatrix(CalibrationMatrix matrix);
    /// Measures a folder of bounced files against the source.
    platform::Task measure(FileURL folder);
    /// Stores the measurement.
    platform::Task save();

  private:
    using Weak = std::weak_ptr<CalibrationController>;
    static platform::Task refresh(Weak weak);
    static platform::Task build(Weak weak, CalibrationMatrix matrix);
    static platform::Task measureFolder(Weak weak, FileURL folder);
    static platform::Task store(Weak weak);
    void changed() const { work_.notify(ImportField::calibration); }

    OpenWork& work_;
    CalibrationState state_;
    const std::unique_ptr<platform::SerialQueue> queue_;
};

} // namespace orvane
