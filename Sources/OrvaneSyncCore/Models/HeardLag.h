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

/// The distance of a recording from the sound that the camera's own microphone recorded of the same event.
struct HeardLag {
    double seconds = 0; ///< to be added to the recording's offset at the head of the clip
    /// By how much `seconds` grows in each second of the clip: -0.001 if the recording plays 0.1 % too
    /// slowly. Absent if the recording was not heard at the tail of the clip.
    std::optional<double> drift = {};
};

/// The recording that the camera's microphone heard, if it is not the one under the clip.
struct HeardElsewhere {
    UUID recordingID;
    double seconds = 0; ///< to be added to the offset that timecode gives for that recording
    /// By how much this place in the recording is better than all others: `SoundPlace::Found::score`.
    double score = 0;
};

/// A place of a recording under a clip that would follow from an offset of the recorder's clock. The camera's
/// microphone confirms it or not.
struct SoundClaim {
    UUID clipID; ///< of the group
    UUID recordingID;
    double offsetSeconds = 0; ///< clip time of the recording's first sample
    double reachSeconds = 0;  ///< it may lie so much earlier or later
    /// The place is known to a second or two, and nothing further off counts: a few seconds of the camera
    /// tell.
    bool isClose = false;

    /// The offset in the key is rounded to a second: the same clip and recording may have claims for several
    /// offsets.
    using Key = std::tuple<UUID, UUID, long, bool>;
    Key key() const { return {clipID, recordingID, std::lround(offsetSeconds), isClose}; }
};
struct HeardClaim {
    std::optional<double> offsetSeconds = {}; ///< as in the claim, but where it was heard; absent: not heard
    bool couldHear = false;                   ///< the camera recorded more than silence and noise
};
/// The claims that were listened to.
using HeardClaims = std::map<SoundClaim::Key, HeardClaim>;
/// Seconds. In a shorter clip it means nothing that a recording was not heard.
inline constexpr double leastClaimedSeconds = 10;

/// What was heard in clips; keys are the identifiers of the matches with the recordings under them.
struct HeardSound {
    std::unordered_map<UUID, HeardLag> lags;
    std::unordered_map<UUID, HeardElsewhere> elsewhere;
    HeardClaims claims = {};
    /// Matches of clips whose camera recorded enough speech to be found, but neither the recording under the
    /// clip nor those beside it have this speech.
    std::unordered_set<UUID> unheard = {};
};

} // namespace orvane
