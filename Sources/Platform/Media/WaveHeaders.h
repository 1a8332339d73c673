#pragma once

#include "Platform/MediaInspector.h"
#include "Platform/RandomAccessFile.h"

#include <optional>

namespace orvane::platform {

/// Duration, channels, rate and dates of a RIFF/WAVE file, RF64 and BW64 included, from its chunk headers.
/// Sizes that lie (0 or all ones in a recording that was cut off, past the end of the file) are read as "to
/// the end of the file". Nothing for any other kind of file.
std::optional<MediaInspection> inspectWave(RandomAccessFile& file);

} // namespace orvane::platform
