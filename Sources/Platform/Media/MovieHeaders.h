#pragma once

#include "Platform/MediaInspector.h"
#include "Platform/RandomAccessFile.h"

#include <optional>

namespace orvane::platform {

/// What the movie header of a QuickTime or MP4 file says, fragments included, without its media data. Nothing
/// when there is no movie header that can be reached through the atoms.
std::optional<MediaInspection> inspectMovie(RandomAccessFile& file);
/// As `heldShare` of the inspection, also where the end that is missing held the movie header. Nothing for
/// movies that are whole, and where media data does not say how long it is.
std::optional<double> heldShareOfMovie(RandomAccessFile& file);

} // namespace orvane::platform
