#pragma once

#include "OrvaneSyncCore/Models/AgreedLag.h"
#include "OrvaneSyncCore/Models/HeardLag.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Matching/RecorderFolders.h"
#include "OrvaneSyncCore/Services/Matching/Recordings.h"
#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"

#include <cstddef>
#include <stop_token>
#include <string>
#include <unordered_set>
#include <vector>

namespace orvane::SoundLag {

/// A recording that is not under the clip.
struct OtherRecording {
    UUID recordingID;
    TakeSound recording;
    double offsetSeconds = 0; ///< clip time of its first sample by timecode
};

/// A clip whose camera recorded sound, together with one of its recordings.
struct Pair {
    UUID matchID; ///< the clip's match with the recording
    FileURL camera;
    TakeSound recording;
    double offsetSeconds = 0;  ///< clip time of the recording's first sample
    double lengthSeconds = 0;  ///< of the clip
    std::string recorder = {}; ///< its folder (`RecorderFolders`)
    /// Recordings that may have the camera's sound if the recording under the clip does not.
    std::vector<OtherRecording> others = {};
};

inline constexpr double leastForDriftSeconds = 50; ///< a drift of 0.1 % is then 40 ms from head to tail
inline constexpr double agreeingSeconds = 0.1;     ///< largest difference of distances that count as equal

/// Whether both pairs have the same camera folder and the same recorder.
bool areOfOneCard(const Pair& a, const Pair& b);

/// For each camera folder and each recorder a few clips, spread over all of them, beginning with
/// the first and the last. Only clips that have their sound by timecode alone are used; if enough of them are
/// long enough to show a drift, only these. None if fewer than three clips can be compared. Also for
/// recordings beside the take of a clip that begin or end within the clip: such a recorder was started late,
/// or its clock is wrong. Pairs of one card are next to each other. Pure; any thread.
std::vector<Pair> pairsToHear(const SyncGroupList& groups);

/// For each of the clips that can be compared its first recording, where it is now, also if it was moved by
/// hand. Pure; any thread.
std::vector<Pair> pairsOf(const SyncGroupList& clips);

/// If two clips of a card have different distances from their sound, a clip halfway between them that was not
/// tried yet: this finds the take from which on a clock is wrong. `tried`: matches that were listened to.
/// Pure; any thread.
std::vector<Pair> pairsBetween(const SyncGroupList& groups, const HeardSound& heard,
                               const std::unordered_set<UUID>& tried);

/// If the heard clips of a camera agree on a small lag that another camera with sound of the same recorder
/// does not have, or that counts alone, further clips, so that enough of them agree or not
/// (`agreedLag::fewestClips`). `tried` as above.
/// Pure; any thread.
std::vector<Pair> pairsToConfirm(const SyncGroupList& groups, const HeardSound& heard,
                                 const std::unordered_set<UUID>& tried);

/// Recordings that are neighbours in time on their card. Any thread.
class RecordingNeighbours {
  public:
    /// Throws Stopped.
    RecordingNeighbours(const SyncGroupList& groups, const std::vector<MediaAsset>& recordings,
                        const MatchRules& rules, const std::stop_token& stop = {});

    /// Adds to each pair the takes directly before and after its recording on the same card. If a clock is
    /// wrong by the distance of two takes, these are under each other's clips. Adds two files in each
    /// direction, as a take may have several parts.
    void addTo(std::vector<Pair>& pairs) const;

  private:
    struct Placed {
        UUID id;
        FileURL url;
        std::string card;
        FilePlace place;
    };
    const SyncGroupList groups_;
    std::vector<Placed> recordings_; ///< sorted by card, then by day and start
};

} // namespace orvane::SoundLag
