#pragma once

#include "Platform/MediaLibrary/FileInput.h"

#include <cstdint>

namespace orvane::platform {

/// The frames that the header of a CAF or Wave64 file states; a file that was cut off has fewer. 0 for other
/// files, compressed sound, and a header that states none. Reads headers alone; the position is undefined
/// afterwards.
std::int64_t claimedFrames(FileInput& input);

} // namespace orvane::platform
