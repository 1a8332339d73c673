#include "OrvaneSyncCLI/RoomTone.h"

#include <exception>

namespace orvane::cli {

RoomTone buildRoomTone(ScanRun& run, const RoomToneOrder& order) {
    AtmoController& atmo = run.controller().atmo();
    if (!atmo.candidates()) run.wait(atmo.scanAtmoCandidates());
    RoomTone roomTone;
    for (const auto& [scene, candidates] : *atmo.candidates()) {
        if (order.scene && *order.scene != scene) continue;
        const auto result = std::make_shared<AtmoResult>();
        try {
            run.show("Building room tone of scene " + scene + "...");
            run.wait(atmo.buildAtmo({.scene = scene,
                                     .candidates = candidates,
                                     .targetDuration = order.seconds,
                                     .outputDirectory = order.directory,
                                     .isApproved = true},
                                    result));
            roomTone.built.push_back(*result);
        } catch (const std::exception& error) {
            roomTone.problems.push_back("no room tone of scene " + scene + ": " + error.what());
        }
    }
    return roomTone;
}

} // namespace orvane::cli
