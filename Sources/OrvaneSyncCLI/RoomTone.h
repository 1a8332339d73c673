#pragma once

#include "OrvaneSyncApp/Controllers/AtmoController.h"
#include "OrvaneSyncCLI/ScanRun.h"

#include <optional>
#include <string>
#include <vector>

namespace orvane::cli {

/// What is asked of the room tone of a scan.
struct RoomToneOrder {
    std::optional<std::string> scene = {}; ///< absent: every scene
    double seconds = AtmoController::usualDuration;
    std::optional<std::string> directory = {}; ///< absent: that of the work
};
struct RoomTone {
    std::vector<AtmoResult> built;
    std::vector<std::string> problems; ///< of the scenes that have none, a line each
};
/// Scans the recordings of a scan that is done, and builds the files, which join its wild tracks.
RoomTone buildRoomTone(ScanRun& run, const RoomToneOrder& order);

} // namespace orvane::cli
