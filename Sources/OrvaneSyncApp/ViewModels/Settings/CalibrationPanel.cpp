#include "OrvaneSyncApp/ViewModels/Settings/CalibrationPanel.h"

#include "OrvaneSyncCore/Utilities/CountText.h"

#include "OrvaneSyncCore/Services/Calibration/CalibrationMatrix.h"
#include "Platform/Text.h"

#include <algorithm>

namespace orvane {

namespace {

std::string someNames(std::vector<std::string> names) {
    constexpr std::size_t most = 6;
    if (names.size() > most) {
        names.resize(most);
        names.emplace_back("…");
    }
    return platform::text::joined(names, ", ");
}

/// A sentence that names the clips of the document that were not measured; empty: none. The document is
/// assumed to be that of the matrix of which fewer clips are missing.
std::string gapsOf(const CalibrationResult& result) {
    const auto isMeasured = [&](const CalibrationPerm& perm) {
        return std::ranges::find(result.measurements, perm, &CalibrationMeasurement::perm) !=
               result.measurements.end();
    };
    std::optional<std::vector<std::string>> fewest;
    std::size_t all = 0;
    for (const CalibrationMatrix matrix : {CalibrationMatrix::sweetSpot, CalibrationMatrix::coarse}) {
        const std::vector<CalibrationPerm> perms = permsOf(matrix);
        std::vector<std::string> missing;
        for (const CalibrationPerm& perm : perms)
            if (!isMeasured(perm)) missing.push_back(filenameTag(perm));
        if (fewest && fewest->size() <= missing.size()) continue;
        fewest = std::move(missing);
        all = perms.size();
    }
    if (!fewest || fewest->empty()) return {};
    return std::to_string(fewest->size()) + " of " + std::to_string(all) +
           " clips of the document were not measured: " + someNames(*fewest) + ".";
}

} // namespace

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
                            " is saved; forecasts use it."
                      : "No calibration is saved; forecasts use built-in estimates.";
    panel.problem = state.problem;
    std::vector<std::string> gaps;
    if (state.measurement)
        if (std::string missing = gapsOf(*state.measurement); !missing.empty())
            gaps.push_back(std::move(missing));
    if (!state.unreadFiles.empty())
        gaps.push_back("These files could not be read: " + someNames(state.unreadFiles) + ".");
    panel.gaps = platform::text::joined(gaps, "\n");
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
