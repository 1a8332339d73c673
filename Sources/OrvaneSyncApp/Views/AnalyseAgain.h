#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"

namespace orvane::views {

/// Analyses all clips in the mode of the first clip whose result is outdated. Tracks that the editor chose
/// stay.
void runSmartAudioAgain(Desktop& desktop);

} // namespace orvane::views
