#pragma once

#include "Platform/Playback/MediaTime.h"
#include "Timecode/TimecodeFrameRate.h"

#include <optional>
#include <string>

namespace orvane {

/// The position of the playhead in the loaded clip. Clip time.
struct PlayheadState {
    static constexpr double usualFrameRate = 24; ///< if the file states none

    platform::MediaTime time;
    double clipDuration = 0; ///< seconds of the video
    double frameRate = usualFrameRate;
    double startTimecodeSeconds = 0; ///< timecode of the first picture, as seconds on the wall clock
    /// The rate at which the file counts its timecode; absent: that of its pictures.
    std::optional<TimecodeFrameRate> timecodeRate{};

    double seconds() const { return time.seconds(); }
    /// The length of a frame.
    platform::MediaTime frameLength() const;
    /// "00:00:00:00" if there is no timecode there.
    std::string timecodeString() const;
    bool operator==(const PlayheadState&) const = default;
};

/// Whether a clip can be played, and whether it plays.
struct TransportState {
    bool isPlaying = false;
    platform::MediaTime duration;
    bool isLoaded = false;
    bool isLoading = false;
    bool isVideoMissing = false; ///< the camera file of the clip opened last is missing

    bool operator==(const TransportState&) const = default;
};

/// What the file states about a picture that cannot be decoded here; 0: not known.
struct KnownPicture {
    double durationSeconds = 0, frameRate = 0;
};

/// How the sound under the clip is played.
struct SoundState {
    float volume = 1; ///< the user's, 0 to 1
    /// Start of the sound on the clip's axis; positive: it starts later than the picture.
    double syncOffsetSeconds = 0;
    bool isDucking = false; ///< muted because no sound would be audible at this speed
};

/// The region that is played repeatedly, and the shown speed.
struct LoopState {
    std::string jklLabel = "STOP";
    bool isLooping = false;
    platform::MediaTime loopStart; ///< clip time
    platform::MediaTime loopEnd;

    bool operator==(const LoopState&) const = default;
};

} // namespace orvane
