#pragma once

#include "Platform/Media/MediaLibrary.h"

#include <string>

namespace orvane::platform {

/// The media libraries, in helper processes. Null when the helper's program is not beside this one or in
/// ../lib beside its folder; the program then reads what its own readers can. Any thread.
const MediaLibrary* mediaLibrary();

/// `inspectMedia` with a library that is requested only when it is needed.
std::optional<MediaInspection> inspectMediaWith(const MediaLibrary* (*library)(), const std::string& path,
                                                RandomAccessFile& file, bool& ranOut);

} // namespace orvane::platform
