#pragma once

#include <cstdint>
#include <vector>

namespace orvane::test {

/// Linear timecode as a recorder hears it: biphase mark code of 80-bit frames (SMPTE 12M), one after the
/// other.
struct LTCSignal {
    std::uint32_t sampleRate = 48000;
    int framesPerSecond = 25;
    float level = 0.5F; ///< linear, full scale 1.0
    /// Of the frame before the first one: a recording starts in the middle of one, and a decoder loses the
    /// first bit.
    int leadInBits = 8;

    /// `seconds` of signal whose first whole frame is `firstFrame`, counted from midnight.
    std::vector<float> samples(std::int64_t firstFrame, double seconds) const;
};

} // namespace orvane::test
