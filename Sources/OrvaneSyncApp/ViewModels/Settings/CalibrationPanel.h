#pragma once

#include "OrvaneSyncApp/Controllers/CalibrationController.h"

#include <string>
#include <vector>

namespace orvane {

/// The calibration panel: which buttons work, and all its words.
struct CalibrationPanel {
    std::string buildTitle;
    bool canBuild = false;
    bool canShowDocument = false;
    bool canMeasure = false;
    bool canSave = false;
    std::string source;   ///< the levels that are measured against; empty where they are not known
    std::string progress; ///< what goes on; empty: nothing
    std::string saved;    ///< the calibration that forecasts go by
    std::string problem;
    /// What the measurement lacks, a line each: clips of the document, and files that could not be read.
    /// Empty where it is whole, or none stands.
    std::string gaps;
    std::vector<CalibrationRow> rows; ///< what was measured, else what is saved
    bool areRowsUnsaved = false;
};
CalibrationPanel calibrationPanel(const CalibrationState& state);

/// What to do in Final Cut Pro, a step a text; `clips` is how many the document has.
std::vector<std::string> calibrationSteps(std::size_t clips);

} // namespace orvane
