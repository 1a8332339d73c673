#pragma once

#include "Platform/Playback/MediaTime.h"
#include "Timecode/TimecodeFrameRate.h"

#include <optional>
#include <string>

namespace orvane {

/// Where in the loaded clip the playhead stands. Clip time.
struct PlayheadState {
    static constexpr double usualFrameRate = 24; ///< where the file says none

    platform::MediaTime time;
    double clipDuration = 0; ///< seconds of the video
    double frameRate = usualFrameRate;
    double startTimecodeSeconds = 0; ///< timecode of the first picture, as seconds on the wall clock
    /// At which the file counts its timecode; absent: at that of its pictures.
    std::optional<TimecodeFrameRate> timecodeRate{};

    double seconds() const { return time.seconds(); }
    /// The length of a frame.
    platform::MediaTime frameLength() const;
    /// "00:00:00:00" where there is no such moment.
    std::string timecodeString() const;
    bool operator==(const PlayheadState&) const = default;
};

/// Whether there is something to play, and whether it plays.
struct TransportState {
    bool isPlaying = false;
    platform::MediaTime duration;
    bool isLoaded = false;
    bool isLoading = false;
    bool isVideoMissing = false; ///< of the clip that was opened last the camera file is not there

    bool operator==(const TransportState&) const = default;
};

/// What the file says of a picture that cannot be decoded here; 0: not known.
struct KnownPicture {
    double durationSeconds = 0, frameRate = 0;
};

/// How the sound under the clip is played.
struct SoundState {
    float volume = 1; ///< the user's, 0 to 1
    /// Start of the sound on the clip's axis; positive: it starts later than the picture.
    double syncOffsetSeconds = 0;
    bool isDucking = false; ///< muted as nothing would be heard at this speed
};

/// The region that is played again and again, and what the screen says of the speed.
struct LoopState {
    std::string jklLabel = "STOP";
    bool isLooping = false;
    platform::MediaTime loopStart; ///< clip time
    platform::MediaTime loopEnd;

    bool operator==(const LoopState&) const = default;
};

} // namespace orvane
