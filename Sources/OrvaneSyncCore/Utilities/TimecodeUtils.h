#pragma once

#include "Timecode/Timecode.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// The conversions between seconds, frame counts, sample counts and timecode text. Rates given as a number
/// are frames per second. Pure; any thread.
namespace TimecodeUtils {

/// Always returns a rate; for unknown values and values that are not finite it is 24. Fractional rates near
/// 30 and 60 give the drop-frame ones.
TimecodeFrameRate frameRate(double fps);
/// A recorder's rate text, such as "25", "29.97DF", "23.976 fps" or "30000/1001 NDF". Absent if the text has
/// no number, or a number that is not a timecode rate.
std::optional<TimecodeFrameRate> timecodeFrameRateFromIXML(const std::optional<std::string>& text);

double bextToSeconds(std::uint64_t samples, double sampleRate);
std::string bextToTC(std::uint64_t samples, double sampleRate, TimecodeFrameRate rate);
std::string bextToTC(std::uint64_t samples, double sampleRate, double fps);
std::string framesToTC(std::int64_t frames, TimecodeFrameRate rate);
std::string secondsToTC(double seconds, TimecodeFrameRate rate);
std::string secondsToTC(double seconds, double fps);
/// Seconds of real time; 0.0 for a malformed text, which a caller cannot distinguish from midnight.
double tcToSeconds(std::string_view text, double fps);
/// Why a typed text is not a timecode of the rate; empty if it is one. Any number of hours is allowed.
std::string whyNoTimecode(std::string_view text, TimecodeFrameRate rate);

} // namespace TimecodeUtils
} // namespace orvane
