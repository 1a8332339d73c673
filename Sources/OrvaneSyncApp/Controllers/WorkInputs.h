#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"

#include <functional>

namespace orvane {

// What the open work was read from, as it is at the call. There may be tens of thousands of files: the list
// is made by the function that is given, which any thread may call.

/// Folders and the media of the clips, where nothing may lie that is made of their sound: room tone that was
/// built before is no clip's and may be built again.
std::function<RunInputs()> inputsOfClips(const OpenWork& work);
/// Folders, all media and the report, where no output may lie.
std::function<RunInputs()> inputsOfScan(const OpenWork& work, const ReportController& reports,
                                        const ScanController& scan);
/// The same with the project, for whatever is not saved as it: a project is saved to the place that it was
/// opened from.
std::function<RunInputs()> inputsOf(const ImportController& controller);

} // namespace orvane
