#pragma once

#include "OrvaneSyncApp/Controllers/RawFileAudioPlayer.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <memory>

namespace orvane::views {

/// To listen to single files. Null where nothing can be played, which is then said in the window.
std::shared_ptr<RawFileAudioPlayer> makeFilePlayer(Desktop& desktop);

} // namespace orvane::views
