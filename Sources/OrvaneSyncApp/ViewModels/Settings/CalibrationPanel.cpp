#include "OrvaneSyncApp/ViewModels/Settings/CalibrationPanel.h"

#include "OrvaneSyncCore/Utilities/CountText.h"

namespace orvane {

CalibrationPanel calibrationPanel(const CalibrationState& state) {
    CalibrationPanel panel;
    const bool isBusy = state.isBuildingMatrix || state.isMeasuring;
    panel.buildTitle = state.hasMatrixOnDisk ? "Rebuild matrix" : "Build matrix";
    panel.canBuild = !isBusy;
    panel.canShowDocument = state.hasMatrixOnDisk && !state.isBuildingMatrix;
    panel.canMeasure = !isBusy;
    panel.areRowsUnsaved =
        state.measurement &&
        (!state.savedCalibration || state.savedCalibration->measuredAt != state.measurement->measuredAt);
    panel.canSave = panel.areRowsUnsaved && !isBusy;
    if (state.isBuildingMatrix) panel.progress = "Building the source, the picture and the document…";
    if (state.isMeasuring) panel.progress = "Measuring the bounced files…";
    if (state.sourceInfo)
        panel.source = formatted("Source: peak %.1f dBFS, ", state.sourceInfo->peakDBFS) +
                       formatted("RMS %.1f dBFS, ", state.sourceInfo->rmsDBFS) +
                       formatted("loudness %.1f LUFS.", state.sourceInfo->integratedLUFS);
    panel.saved = state.savedCalibration
                      ? "A calibration of " +
                            counted(state.savedCalibration->measurements.size(), "clip", "clips") +
                            " is saved; forecasts go by it."
                      : "No calibration is saved; forecasts go by built-in estimates.";
    panel.problem = state.problem;
    if (state.measurement)
        panel.rows = calibrationRows(*state.measurement);
    else if (state.savedCalibration)
        panel.rows = calibrationRows(*state.savedCalibration);
    return panel;
}

std::vector<std::string> calibrationSteps(std::size_t clips) {
    const std::string all = counted(clips, "clip", "clips");
    return {"Import the document into Final Cut Pro.",
            "Select all " + all + " of the event “OrvaneSync Calibration”.",
            "Share them as audio only, as WAV, into an empty folder. The names stay as they are."};
}

} // namespace orvane
