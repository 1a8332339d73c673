#pragma once

#include "Timecode/TimecodeFrameRate.h"

#include <cstdint>
#include <string>
#include <vector>

namespace orvane::test {

/// The 80 bits of one frame of linear timecode (SMPTE 12M) as digits, flags and user bits 0, sync word at the
/// end.
std::string ltcBits(int hours, int minutes, int seconds, int frames);

/// Biphase mark: the level changes at the start of each bit, of the first one too, and in the middle of a 1.
std::vector<float> ltcSignal(const std::string& bits, double samplesPerBit, float level = 0.5F);

/// Linear timecode as a recorder receives it, one frame after another.
struct LTCSignal {
    std::uint32_t sampleRate = 48000;
    TimecodeFrameRate rate = TimecodeFrameRate::fps25;
    float level = 0.5F; ///< linear, full scale 1.0
    double speed = 1;   ///< of the tape

    /// `seconds` of signal that begin `startFrames` frames after midnight, which may be within a frame.
    std::vector<float> samples(double startFrames, double seconds) const;
};

} // namespace orvane::test
