#pragma once

#include "Timecode/Fraction.h"

namespace orvane {

/// The short piece of sound that is played with a frame step. Times in seconds. Pure; any thread.
namespace ScrubBlipAudio {

/// The longest blip.
inline constexpr double longestSeconds = 0.12;

/// The exact rate, in frames per second, at which a clip is stepped: 24 if the rate is not a positive finite
/// number, at most 1000.
Fraction steppingFrameRate(double frameRate);
/// A frame's length, at most `ceiling`; 0 for a ceiling below 0.
double blipSeconds(double forFrameRate, double ceiling);
/// Converts a time of the clip to a time of the recording.
constexpr double sourceSeconds(double forTimeline, double syncOffset) { return forTimeline - syncOffset; }

} // namespace ScrubBlipAudio
} // namespace orvane
