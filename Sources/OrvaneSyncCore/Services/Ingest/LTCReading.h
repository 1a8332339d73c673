#pragma once

#include "OrvaneSyncCore/Services/Ingest/LTCWordReader.h"
#include "Timecode/TimecodeFrameRate.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace orvane {

/// The timecode at the first sample of a sound.
struct LTCStart {
    TimecodeFrameRate rate{};
    std::int64_t nearestFrame = 0; ///< frames since midnight, within a day
    double remainder = 0;          ///< frames from there to the first sample; -0.5 to 0.5

    /// The nearest frame as text.
    std::string timecode() const;
    /// The same in frames of a picture whose rate is a whole multiple of the timecode's, such as 50 for 25;
    /// nothing for another rate.
    std::optional<LTCStart> inFramesOf(const Fraction& pictureRate) const;
    /// Seconds on the wall clock, exact beyond the frame; not below 0.
    double seconds() const;
};

/// What the words of a sound say together.
struct LTCReading {
    LTCWord first; ///< the first word that agrees with the others
    /// Absent where neither the labels nor the speed show at which rate the timecode counts.
    std::optional<LTCStart> start;
};

/// Believes the longest run of words that follow each other, each label one frame behind the one before; a
/// single word only where no word follows or precedes it. Nothing without one.
///
/// Rate: the frame before 0 tells 24, 25 or 30, else the measured speed where it is within 10 % of one of
/// them. The pulled-down rate is 0.1 % slower; the measured speed decides where the words are long enough to
/// tell it to 0.025 % and it lies within 0.03 % of one of the two, else `stated`, the rate that the file
/// names, else the drop flag, else the nearer one.
///
/// Start: the mean over the run of label minus position, in frames. Frames are as long as the rate says, or
/// as measured where the speed is more than 0.1 % off.
///
/// `sampleRate` in Hz, of the words' positions.
std::optional<LTCReading> readLTC(std::span<const LTCWord> words, double sampleRate,
                                  std::optional<TimecodeFrameRate> stated);

} // namespace orvane
