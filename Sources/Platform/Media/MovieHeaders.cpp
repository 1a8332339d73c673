#include "Platform/Media/MovieHeaders.h"

namespace orvane::platform {
std::optional<MediaInspection> inspectMovie(RandomAccessFile&) { return std::nullopt; }
} // namespace orvane::platform
