#pragma once

#include "Platform/MediaInspector.h"
#include "Platform/RandomAccessFile.h"

#include <optional>

namespace orvane::platform {

/// What the movie header of a QuickTime or MP4 file says, fragments included, without its media data. Nothing
/// when no movie header can be reached through the atoms.
std::optional<MediaInspection> inspectMovie(RandomAccessFile& file);
/// As `MediaInspection::heldShare`, also where the missing end contained the movie header. Nothing for
/// complete movies, and where the media data does not state its length.
std::optional<double> heldShareOfMovie(RandomAccessFile& file);

} // namespace orvane::platform
