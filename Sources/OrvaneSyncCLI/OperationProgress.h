#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"

#include <optional>

namespace orvane::cli {

class ProgressLine;

/// The progress of the operation that reports it with a change of this field. Absent for other fields, and if
/// no such operation is under way.
std::optional<SmartAudioProgress> operationProgress(const ImportController& controller, ImportField field);
/// Shows it on the line.
void showProgress(ProgressLine& line, const ImportController& controller, ImportField field);

} // namespace orvane::cli
