#pragma once

#include "Timecode/TimecodeFrameRate.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// A start that a file states as hours, minutes, seconds and frames.
struct StartTimecode {
    std::string text; ///< such as 01:00:00:00; ";" before the frames at a drop-frame rate
    std::optional<TimecodeFrameRate> rate; ///< the rate at which it counts, if stated

    bool operator==(const StartTimecode&) const = default;
};

namespace StatedTimecode {

/// Hours, minutes, seconds and frames of a timecode text.
struct Label {
    int hours = 0, minutes = 0, seconds = 0, frames = 0;
    bool isDrop = false; ///< ";", "," or "." is before the frames

    bool isZero() const { return hours == 0 && minutes == 0 && seconds == 0 && frames == 0; }
};
/// Two digits each, separated by ":", ";", "," or ".". Absent if the text is not a time of day.
std::optional<Label> labelIn(std::string_view text);

/// The rate that counts `base` frames in a counted second. The base 24 also means 23.976; the picture's rate
/// decides between the two, and without it whether it is drop frame.
std::optional<TimecodeFrameRate> rateOf(int base, bool isDrop, std::optional<double> pictureRate);

/// The frame may be one that the rate does not have: a doubt reports it, and the file would have no start
/// without it.
StartTimecode start(const Label& label, std::optional<TimecodeFrameRate> rate);

} // namespace StatedTimecode
} // namespace orvane
