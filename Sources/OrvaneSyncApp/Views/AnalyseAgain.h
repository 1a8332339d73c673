#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"

namespace orvane::views {

/// Analyses all clips in the mode of the settings; channels that somebody has chosen stay.
void runSmartAudioAgain(Desktop& desktop);

} // namespace orvane::views
