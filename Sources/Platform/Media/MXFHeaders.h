#pragma once

#include "Platform/MediaInspector.h"
#include "Platform/RandomAccessFile.h"

#include <optional>

namespace orvane::platform {

struct MXFInspection {
    MediaInspection facts;
    /// Whether the header states everything that a probe needs: a length, and size, rate and codec of each
    /// track. Otherwise the media library may find more.
    bool isComplete = false;
};

/// What the header metadata of an MXF file says, without its essence. The start is that of the material
/// package, which players show. Where that is absent or 0, it is the start of the file package, and then that
/// of the tape or the imported file that this refers to, each moved by the position at which the clip begins
/// there: a device that restarts its own clock at 0 keeps the recorded start in these. Nothing for any other
/// kind of file.
std::optional<MXFInspection> inspectMXF(RandomAccessFile& file);

} // namespace orvane::platform
