#pragma once

#include "Platform/MediaInspector.h"
#include "Platform/RandomAccessFile.h"

#include <optional>

namespace orvane::platform {

/// What the movie header of a QuickTime or MP4 file says, fragments included, without its media data. Nothing
/// when there is no movie header that the walk can find.
std::optional<MediaInspection> inspectMovie(RandomAccessFile& file);

} // namespace orvane::platform
