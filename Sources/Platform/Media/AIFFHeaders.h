#pragma once

#include "Platform/MediaInspector.h"
#include "Platform/RandomAccessFile.h"

#include <optional>

namespace orvane::platform {

/// Length, channels and rate of an AIFF or AIFC file of uncompressed sound, from its chunk headers. Nothing
/// for any other kind of file, and for one of which a media library reads more: compressed sound, and tags
/// ("ID3 ") with dates.
std::optional<MediaInspection> inspectAIFF(RandomAccessFile& file);

} // namespace orvane::platform
