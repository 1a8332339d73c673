#pragma once

#include "Platform/MediaLibrary/MediaLibrary.h"

#include <string>

namespace orvane::platform {

/// The module of media libraries, loaded at the first call from beside the program or from ../lib beside its
/// folder, and kept for the life of the process. Null when it is not there or of another version; the program
/// then reads what its own walks can read. Any thread.
const MediaLibrary* mediaLibrary();

/// `inspectMedia` with a library that is only fetched when it is needed.
std::optional<MediaInspection> inspectMediaWith(const MediaLibrary* (*library)(), const std::string& path,
                                                RandomAccessFile& file, bool& hindered);

} // namespace orvane::platform
