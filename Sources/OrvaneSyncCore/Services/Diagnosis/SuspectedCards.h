#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"

#include <cstddef>
#include <set>
#include <string>
#include <vector>

namespace orvane {

/// Recordings whose clock may be wrong.
struct SuspectedCard {
    Card card;
    std::size_t all = 0;       ///< recordings of the card
    bool isPart = false;       ///< those of a card that lie under no clip, where others lie right
    bool fitsFewClips = false; ///< few lie under all of a clip, whatever else lies there

    /// "the recordings in '/S'", of a part "3 of 6 recordings in '/S' ('T3.WAV' to 'T5.WAV')".
    std::string name(const Shoot& shoot) const;
};

/// Which clocks of recorders are to be looked at.
struct SuspectedCards {
    SuspectedCards(const Shoot& shoot, const TimedClips& clips);

    std::vector<SuspectedCard> cards;
    std::vector<bool> isSuspected; ///< by recording, of a card that lies under few clips
    std::set<long> usedDays;       ///< of the recordings that lie right
};

/// Clocks of cameras, or from some clip on or up to it, against recordings that lie right under the clips of
/// others. `toHear` as of `addClockDoubts`.
void addCameraClockDoubts(const Shoot& shoot, const TimedClips& clips, const SuspectedCards& suspected,
                          SyncDoubts& doubts, std::vector<SoundClaim>* toHear);

} // namespace orvane
