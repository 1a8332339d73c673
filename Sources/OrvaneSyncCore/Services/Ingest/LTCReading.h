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
    double remainder = 0;          ///< frames from `nearestFrame` to the first sample; -0.5 to 0.5

    /// The nearest frame as text.
    std::string timecode() const;
    /// The same in frames of a picture whose rate is a whole multiple of the timecode's, such as 50 for 25;
    /// absent for other rates.
    std::optional<LTCStart> inFramesOf(const Fraction& pictureRate) const;
    /// Seconds of real time, more exact than a frame; not below 0.
    double seconds() const;
};

/// The result from all words of a sound.
struct LTCReading {
    LTCWord first; ///< the first word that agrees with the others
    /// Absent if neither the frame numbers nor the speed show the rate of the timecode.
    std::optional<LTCStart> start;
};

/// Uses the longest run of consecutive words in which each timecode is one frame after the one before. A run
/// of a single word is used only if no other word adjoins it. Absent if there is no run.
///
/// Rate: the number of the frame before 0 shows 24, 25 or 30; without it the measured speed decides, if it is
/// within 10 % of one of them. The pulled-down rate is 0.1 % slower. Between the two decides the measured
/// speed, if the run is long enough for an error of at most 0.025 % and the speed is within 0.03 % of one of
/// them; otherwise `stated`, the rate in the file's metadata; otherwise the drop flag; otherwise the nearer
/// one.
///
/// Start: the mean over the run of timecode minus position, in frames. The length of a frame is that of the
/// rate, or the measured one if the speed differs by more than 0.1 %.
///
/// `sampleRate` in Hz, for the positions of the words.
std::optional<LTCReading> readLTC(std::span<const LTCWord> words, double sampleRate,
                                  std::optional<TimecodeFrameRate> stated);

} // namespace orvane
