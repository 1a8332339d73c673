#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"

namespace orvane::views {

/// Analyses all clips in the mode of the settings. Tracks that the editor chose stay.
void runSmartAudioAgain(Desktop& desktop);

} // namespace orvane::views
