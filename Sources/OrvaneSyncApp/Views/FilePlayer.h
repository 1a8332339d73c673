#pragma once

#include "OrvaneSyncApp/Controllers/RawFileAudioPlayer.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <memory>

namespace orvane::views {

/// A player for single files. Null if nothing can be played; then the window says so.
std::shared_ptr<RawFileAudioPlayer> makeFilePlayer(Desktop& desktop);
/// The time of the player in its file and the length of the file; empty if no file is open.
QString placeText(const RawFileAudioPlayer& player);

} // namespace orvane::views
