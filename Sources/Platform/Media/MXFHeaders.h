#pragma once

#include "Platform/MediaInspector.h"
#include "Platform/RandomAccessFile.h"

#include <optional>

namespace orvane::platform {

struct MXFInspection {
    MediaInspection facts;
    /// Whether the header tells all that a probe asks for: a length, and of each track size, rate and codec.
    /// Otherwise the media library may know more.
    bool isComplete = false;
};

/// What the header metadata of an MXF file says, without its essence. The start is that of the material
/// package, which is what players show. Where that is absent or 0, it is the start of the package of the
/// file, and then that of the tape or the imported file behind it, each moved by the position at which the
/// clip begins there: a device that restarts its own clock at 0 keeps the recorded one in these. Nothing for
/// any other kind of file.
std::optional<MXFInspection> inspectMXF(RandomAccessFile& file);

} // namespace orvane::platform
