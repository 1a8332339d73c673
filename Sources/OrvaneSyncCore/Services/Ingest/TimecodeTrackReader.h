#pragma once

#include "Platform/RandomAccessFile.h"
#include "Timecode/TimecodeFrameRate.h"

#include <optional>
#include <string>

namespace orvane {

/// Reads the first sample of the timecode ("tmcd") track of a QuickTime or MP4 file, moved by what an edit
/// list leaves out in front of the movie's start. A walk of its own over
/// the atoms, so that a timecode is also found in files that no media library opens.
namespace TimecodeTrackReader {

struct Start {
    std::string timecode; ///< such as 01:00:00:00; ";" before the frames at a drop-frame rate
    /// Frames per second of the track, exactly; absent when the track states none that is usable, and then
    /// the timecode was counted at 24.
    std::optional<double> projectFrameRate;
    /// The same as a rate of timecode, drop frame or not as the track says; absent when the table has none.
    std::optional<TimecodeFrameRate> timecodeFrameRate;
};

/// Nothing when there is no timecode track or its first sample cannot be read. One thread a file.
std::optional<Start> read(platform::RandomAccessFile& file);

} // namespace TimecodeTrackReader
} // namespace orvane
