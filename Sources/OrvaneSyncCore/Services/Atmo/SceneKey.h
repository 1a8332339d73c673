#pragma once

#include "OrvaneSyncCore/Models/SyncGroup.h"

#include <string>

namespace orvane {

/// What gathers the clips of a scene: the letters and digits that its number begins with, as the reports say
/// it, else the recorder. "12A" of scene 12A-3; "Unscened" without any. Pure; any thread.
std::string sceneKey(const SyncGroup& group);

} // namespace orvane
