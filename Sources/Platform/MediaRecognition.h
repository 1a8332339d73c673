#pragma once

#include "Platform/RandomAccessFile.h"

#include <string_view>

namespace orvane::platform {

/// Whether the extension is one that cameras, recorders and post-production give to picture or sound,
/// whatever its case. Far more of them than can be read: for keeping hands off a file, not for finding clips.
bool isMediaName(std::string_view path);

/// Whether the file begins as picture or sound does, whatever its name. Reads its first 64 KB at most, and
/// the headers of a few atoms behind them.
bool beginsAsMedia(RandomAccessFile& file);

} // namespace orvane::platform
