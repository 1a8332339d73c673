#pragma once

#include "OrvaneSyncCore/Models/HeardLag.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Matching/Recordings.h"
#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"

#include <cstddef>
#include <stop_token>
#include <string>
#include <unordered_set>
#include <vector>

namespace orvane::SoundLag {

/// A recording that does not lie under a clip.
struct OtherRecording {
    UUID recordingID;
    TakeSound recording;
    double offsetSeconds = 0; ///< clip time of its first sample by timecode
};

/// A clip whose camera recorded sound, with one of its recordings.
struct Pair {
    UUID matchID; ///< of the clip with the recording
    FileURL camera;
    TakeSound recording;
    double offsetSeconds = 0; ///< clip time of the recording's first sample
    double lengthSeconds = 0; ///< of the clip
    /// In which the camera's sound may be, where it is not in the recording under the clip.
    std::vector<OtherRecording> others = {};
};

inline constexpr double leastForDriftSeconds = 50; ///< 0.1 % is then 40 ms from the head to the tail
inline constexpr double leastHeardSeconds = 3;     ///< of a clip
inline constexpr double agreeingSeconds = 0.1;     ///< of what is heard of clips at one distance
inline constexpr std::size_t fewestPairs = 3;      ///< of a card, as less is no sign

/// Whose clips are told from each other by where they are heard.
bool areOfOneCard(const Pair& a, const Pair& b);

/// Of each camera folder with each folder of recordings some clips, spread over them, the first and the last
/// to begin with: those that have their sound by timecode alone, and where there are enough that last long
/// enough to show a drift, of these. None where three could not be heard. Of what lies beside the take of a
/// clip, recordings that begin within the clip or end within it: such a recorder was started late, or its
/// clock is wrong. Pairs of one card stand together. Pure; any thread.
std::vector<Pair> pairsToHear(const SyncGroupList& groups);

/// Where two clips of a card were heard at different distances from their sound, the one halfway between them
/// that was not listened to: so the take is found from which on a clock is wrong. Those of `tried` were
/// listened to, by match. Pure; any thread.
std::vector<Pair> pairsBetween(const SyncGroupList& groups, const HeardSound& heard,
                               const std::unordered_set<UUID>& tried);

/// The recordings beside each other in time, card by card. Any thread.
class RecordingNeighbours {
  public:
    /// Throws Stopped.
    RecordingNeighbours(const SyncGroupList& groups, const std::vector<MediaAsset>& recordings,
                        const MatchRules& rules, const std::stop_token& stop = {});

    /// Gives each pair the takes right before and behind its recording on the same card, which a clock that
    /// is wrong by the distance of two takes lays under each other's clips; two files either way, as a take
    /// may be in parts.
    void addTo(std::vector<Pair>& pairs) const;

  private:
    struct Placed {
        UUID id;
        FileURL url;
        std::string card;
        FilePlace place;
    };
    const SyncGroupList groups_;
    std::vector<Placed> recordings_; ///< by card, then by day and start
};

} // namespace orvane::SoundLag
