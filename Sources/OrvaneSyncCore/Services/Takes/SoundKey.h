#pragma once

#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"

#include <string>

namespace orvane {

/// Appends to the key of a cache all files of the take: path, size and date as they are now, and the position
/// in the take. False if the attributes of a file cannot be read; the key is then of no use. Any thread that
/// may wait.
bool appendSound(std::string& key, const TakeSound& sound);

} // namespace orvane
