#pragma once

#include "Platform/RandomAccessFile.h"

#include <string_view>

namespace orvane::platform {

/// Whether the extension is one that cameras, recorders and post-production use for picture or sound, in any
/// case. Far more extensions than can be read: it decides which files must not be touched, not which are
/// clips.
bool isMediaName(std::string_view path);

/// Whether the file begins as picture or sound files do, whatever its name. Reads its first 64 KB at most,
/// and the headers of a few atoms after them.
bool beginsAsMedia(RandomAccessFile& file);

} // namespace orvane::platform
