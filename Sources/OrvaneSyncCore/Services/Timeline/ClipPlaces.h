#pragma once

namespace orvane {

/// Where in a clip the playhead goes for a place in its sound. `audioOffsetSeconds`: clip time of the sound's
/// first sample, the manual offset included. All in seconds. Pure; any thread.
namespace ClipPlaces {

/// Of the anchor: not behind the clip, and not before it unless the sound begins there.
double ofAnchor(double anchorInAudio, double audioOffsetSeconds, double clipDuration);
/// Of a click on the waveform.
double ofClick(double secondsInAudio, double audioDuration, double audioOffsetSeconds);

} // namespace ClipPlaces
} // namespace orvane
