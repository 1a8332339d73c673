#pragma once

#include "OrvaneSyncApp/Controllers/AtmoController.h"
#include "OrvaneSyncCLI/ScanRun.h"

#include <optional>
#include <string>
#include <vector>

namespace orvane::cli {

/// The requested room tone of a scan.
struct RoomToneOrder {
    std::optional<std::string> scene = {}; ///< absent: every scene
    double seconds = AtmoController::usualDuration;
    std::optional<std::string> directory = {}; ///< absent: that of the open work
};
struct RoomTone {
    std::vector<AtmoResult> built;
    std::vector<std::string> problems; ///< one line for each scene that has no room tone
};
/// Searches the recordings of a finished scan for room tone and builds the files, which join its wild tracks.
RoomTone buildRoomTone(ScanRun& run, const RoomToneOrder& order);

} // namespace orvane::cli
