#pragma once

#include "Timecode/Fraction.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace orvane {

/// The frame rates of timecode. A "d" at the end means drop frame: frame numbers are skipped at the start of
/// each minute that is no multiple of ten, so that the count follows the clock (SMPTE 12M).
enum class TimecodeFrameRate : std::uint8_t {
    fps23_976,
    fps24,
    fps24_98,
    fps25,
    fps29_97,
    fps29_97d,
    fps30,
    fps30d,
    fps47_952,
    fps48,
    fps50,
    fps59_94,
    fps59_94d,
    fps60,
    fps60d,
    fps90,
    fps95_904,
    fps96,
    fps100,
    fps119_88,
    fps119_88d,
    fps120,
    fps120d,
};

inline constexpr std::size_t timecodeFrameRateCount = 23;

namespace timecodeRate {

/// The name of the case, such as "fps29_97d".
std::string_view name(TimecodeFrameRate rate);
/// The case of that name, exactly.
std::optional<TimecodeFrameRate> fromName(std::string_view name);
std::array<TimecodeFrameRate, timecodeFrameRateCount> all();

/// Frames per second.
Fraction rate(TimecodeFrameRate rate);
bool isDrop(TimecodeFrameRate rate);
/// The count at which the frames digit rolls over.
int maxFrames(TimecodeFrameRate rate);
/// Frame numbers skipped at the start of each minute that is no multiple of ten; 0 without drop.
int framesDroppedPerMinute(TimecodeFrameRate rate);
/// The rate at which frames are counted within a ten-minute block, in hundredths: 2997 for 29.97.
int hundredthsForElapsedFrames(TimecodeFrameRate rate);
/// The same as a floating-point rate.
double frameRateForElapsedFramesCalculation(TimecodeFrameRate rate);
/// The rate in real time.
double frameRateForRealTimeCalculation(TimecodeFrameRate rate);
/// ';' for drop frame, else ':'.
char frameSeparator(TimecodeFrameRate rate);
/// Number of digits of the frames.
int frameDigits(TimecodeFrameRate rate);

/// The first case, in the order above, with exactly this rate and this drop flag.
std::optional<TimecodeFrameRate> from(const Fraction& rate, bool drop);

} // namespace timecodeRate
} // namespace orvane
