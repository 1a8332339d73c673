#pragma once

#include "Platform/RandomAccessFile.h"
#include "Timecode/TimecodeFrameRate.h"

#include <optional>
#include <string>

namespace orvane {

/// Reads the first sample of the timecode ("tmcd") track of a QuickTime or MP4 file and adds what an edit
/// list cuts off before the movie's start. Scans the atoms itself, so that a timecode is also found in files
/// that no media library opens.
namespace TimecodeTrackReader {

struct Start {
    std::string timecode; ///< such as 01:00:00:00; ";" before the frames at a drop-frame rate
    /// Frames per second of the track, exactly. Absent if the track states no usable rate; then the timecode
    /// was counted at 24.
    std::optional<double> projectFrameRate;
    /// The same as a timecode rate, drop frame or not as the track says; absent if there is no such timecode
    /// rate.
    std::optional<TimecodeFrameRate> timecodeFrameRate;
};

/// Absent if there is no timecode track or its first sample cannot be read. One thread for each file.
std::optional<Start> read(platform::RandomAccessFile& file);

} // namespace TimecodeTrackReader
} // namespace orvane
