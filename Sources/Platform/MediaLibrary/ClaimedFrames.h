#pragma once

#include "Platform/MediaLibrary/FileInput.h"

#include <cstdint>

namespace orvane::platform {

/// The frames that the header of a CAF or Wave64 file claims, which a file that was cut off no longer has. 0
/// for other files, compressed sound, and a header that claims nothing. Reads headers alone; the position is
/// anywhere afterwards.
std::int64_t claimedFrames(FileInput& input);

} // namespace orvane::platform
