#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"

#include <functional>

namespace orvane {

// The files that the open work was read from, as of the call. There may be tens of thousands: the returned
// function makes the list, and any thread may call it.

/// Folders and the media of the clips. A file made from their sound must not replace any of these: room tone
/// that was built before belongs to no clip and may be built again.
std::function<RunInputs()> inputsOfClips(const OpenWork& work);
/// Folders, all media and the report, which no output may replace.
std::function<RunInputs()> inputsOfScan(const OpenWork& work, const ReportController& reports,
                                        const ScanController& scan);
/// The same with the project, for all outputs but the project itself, which is saved to the place that it was
/// opened from.
std::function<RunInputs()> inputsOf(const ImportController& controller);

} // namespace orvane
