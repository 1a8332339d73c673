#pragma once

#include "Timecode/Fraction.h"

namespace orvane {

/// The short piece of sound that a frame step plays. Times in seconds. Pure; any thread.
namespace ScrubBlipAudio {

/// No blip is longer.
inline constexpr double longestSeconds = 0.12;

/// Frames per second by which a clip is stepped, exactly: 24 for a rate that is no positive finite number, at
/// most 1000.
Fraction steppingFrameRate(double frameRate);
/// A frame's length, at most `ceiling`; 0 for a ceiling below 0.
double blipSeconds(double forFrameRate, double ceiling);
/// The place in the recording of a moment of the clip.
constexpr double sourceSeconds(double forTimeline, double syncOffset) { return forTimeline - syncOffset; }

} // namespace ScrubBlipAudio
} // namespace orvane
