#pragma once

#include "Timecode/TimecodeFrameRate.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// A start that a file states as a label.
struct StartTimecode {
    std::string text; ///< such as 01:00:00:00; ";" before the frames at a drop-frame rate
    std::optional<TimecodeFrameRate> rate; ///< at which it counts, where that is stated

    bool operator==(const StartTimecode&) const = default;
};

namespace StatedTimecode {

/// What a label of hours, minutes, seconds and frames says.
struct Label {
    int hours = 0, minutes = 0, seconds = 0, frames = 0;
    bool isDrop = false; ///< ";", "," or "." stands in front of the frames

    bool isZero() const { return hours == 0 && minutes == 0 && seconds == 0 && frames == 0; }
};
/// Two digits each, between ":", ";", "," or ".". Nothing for what no clock shows.
std::optional<Label> labelIn(std::string_view text);

/// The case that counts `base` frames a second. A base says 24 for 23.976 too, and the rate of the picture
/// tells which of the two it is; without one, only drop frame does.
std::optional<TimecodeFrameRate> rateOf(int base, bool isDrop, std::optional<double> pictureRate);

/// Nothing for a frame that the rate does not have.
std::optional<StartTimecode> start(const Label& label, std::optional<TimecodeFrameRate> rate);

} // namespace StatedTimecode
} // namespace orvane
