#pragma once

#include "OrvaneSyncCore/Models/SyncGroup.h"

#include <string>

namespace orvane {

/// The key that the clips of a scene have in common: the digits and letters at the beginning of the scene's
/// number as the reports give it, or else as the recorder does. "12A" for scene 12A-3; "Unscened" if there is
/// none. Pure; any thread.
std::string sceneKey(const SyncGroup& group);

} // namespace orvane
