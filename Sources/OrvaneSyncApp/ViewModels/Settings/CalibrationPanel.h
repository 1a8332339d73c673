#pragma once

#include "OrvaneSyncApp/Controllers/CalibrationController.h"

#include <string>
#include <vector>

namespace orvane {

/// The calibration panel: which buttons are enabled, and all its texts.
struct CalibrationPanel {
    std::string buildTitle;
    bool canBuild = false;
    bool canShowDocument = false;
    bool canMeasure = false;
    bool canSave = false;
    std::string source;   ///< the levels before the effects; empty if unknown
    std::string progress; ///< what is being done; empty: nothing
    std::string saved;    ///< the calibration that forecasts use
    std::string problem;
    /// What is missing in the measurement, one line each: clips of the document, and files that could not be
    /// read. Empty if nothing is missing or there is no measurement.
    std::string gaps;
    std::vector<CalibrationRow> rows; ///< what was measured, otherwise what is saved
    bool areRowsUnsaved = false;
};
CalibrationPanel calibrationPanel(const CalibrationState& state);

/// What to do in Final Cut Pro, one text for each step; `clips` is the number of clips in the document.
std::vector<std::string> calibrationSteps(std::size_t clips);

} // namespace orvane
