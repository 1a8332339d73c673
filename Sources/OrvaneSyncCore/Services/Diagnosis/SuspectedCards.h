#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"

#include <cstddef>
#include <set>
#include <string>
#include <vector>

namespace orvane {

/// Recordings whose clock may be wrong.
struct SuspectedCard {
    Card card;
    std::size_t all = 0; ///< recordings of the card
    /// The recordings lie under no clip, while others of their card are right.
    bool isPart = false;
    bool fitsFewClips = false; ///< few of them cover a clip or lie within one, whatever else lies there

    /// "the recordings in '/S'"; for a part, "3 of 6 recordings in '/S' ('T3.WAV' to 'T5.WAV')".
    std::string name(const Shoot& shoot) const;
};

/// The recorders' clocks that are to be checked.
struct SuspectedCards {
    SuspectedCards(const Shoot& shoot, const TimedClips& clips);

    std::vector<SuspectedCard> cards;
    std::vector<bool> isSuspected; ///< by recording: its card lies under few clips
    std::set<long> usedDays;       ///< days of the recordings that are right
};

/// Clocks of cameras, for all clips or from one clip on or up to it, compared with recordings that are right
/// under the clips of other cameras. `toHear`: as in `addClockDoubts`.
void addCameraClockDoubts(const Shoot& shoot, const TimedClips& clips, const SuspectedCards& suspected,
                          SyncDoubts& doubts, std::vector<SoundClaim>* toHear);

} // namespace orvane
