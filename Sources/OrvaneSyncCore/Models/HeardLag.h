#pragma once

#include "OrvaneSyncCore/Models/UUID.h"

#include <optional>
#include <unordered_map>

namespace orvane {

/// How a recording lies against the microphone of a camera that heard the same.
struct HeardLag {
    double seconds = 0; ///< to be added to the recording's offset at the head of the clip
    /// What that grows by in each second of the clip: -0.001 where the recording plays 0.1 % too slowly.
    /// Absent where the tail of the clip was not heard.
    std::optional<double> drift = {};
};

/// The recording that the microphone of a camera heard, where it is not the one that lies under the clip.
struct HeardElsewhere {
    UUID recordingID;
    double seconds = 0; ///< to be added to where timecode lays that recording
    /// By which its place is ahead of all others in it: `SoundPlace::Found::score`.
    double score = 0;
};

/// What was heard of clips, by the match with the recording under them.
struct HeardSound {
    std::unordered_map<UUID, HeardLag> lags;
    std::unordered_map<UUID, HeardElsewhere> elsewhere;
};

} // namespace orvane
