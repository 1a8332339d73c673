#pragma once

#include "OrvaneSyncCore/Models/UUID.h"

#include <cmath>
#include <map>
#include <optional>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <vector>

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

/// A recording where an offset of its clock would lay it under a clip, which the camera's microphone confirms
/// or not.
struct SoundClaim {
    UUID clipID; ///< of the group
    UUID recordingID;
    double offsetSeconds = 0; ///< clip time of the recording's first sample
    double reachSeconds = 0;  ///< it may lie so much earlier or later

    /// Offsets to a second: the same clip and recording may be claimed for several.
    using Key = std::tuple<UUID, UUID, long>;
    Key key() const { return {clipID, recordingID, std::lround(offsetSeconds)}; }
};
struct HeardClaim {
    std::optional<double> offsetSeconds = {}; ///< where the recording was heard, as of the claim
    bool couldHear = false;                   ///< the camera has other sound than silence and noise
};
/// Of those that were listened to.
using HeardClaims = std::map<SoundClaim::Key, HeardClaim>;
/// A clip has to be so long for what is not heard in it to mean anything, seconds.
inline constexpr double leastClaimedSeconds = 10;

/// What was heard of clips, by the match with the recording under them.
struct HeardSound {
    std::unordered_map<UUID, HeardLag> lags;
    std::unordered_map<UUID, HeardElsewhere> elsewhere;
    HeardClaims claims = {};
    /// Whose cameras have speech, long enough to be found, and nothing of it is in the recording under it nor
    /// in those beside that.
    std::unordered_set<UUID> unheard = {};
};

} // namespace orvane
