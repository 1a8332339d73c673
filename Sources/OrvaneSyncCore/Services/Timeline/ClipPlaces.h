#pragma once

namespace orvane {

/// The position of the playhead in a clip for a position in its sound. `audioOffsetSeconds`: clip time of the
/// sound's first sample, including the manual offset. All in seconds. Pure; any thread.
namespace ClipPlaces {

/// For the anchor: never after the clip's end, and before its start only if the sound begins there.
double ofAnchor(double anchorInAudio, double audioOffsetSeconds, double clipDuration);
/// For a click on the waveform.
double ofClick(double secondsInAudio, double audioDuration, double audioOffsetSeconds);

} // namespace ClipPlaces
} // namespace orvane
