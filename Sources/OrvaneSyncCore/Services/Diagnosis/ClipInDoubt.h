#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"

#include <functional>
#include <string>
#include <vector>

namespace orvane {

/// One clip, its take, and the doubts about the two. The references must live as long as this object.
struct ClipInDoubt {
    ClipInDoubt(const Shoot& theShoot, const Shoot::Clip& theClip);

    const Shoot& shoot;
    const Shoot::Clip& clip;
    const SyncGroup& group;
    std::string name; ///< of the clip, in quotes
    Take take;
    std::vector<SyncDoubt> doubts;

    /// Seconds; 0 for a clip without a place.
    double length() const { return clip.place ? clip.place->range.durationSeconds() : 0; }
    const MediaAsset& fileOf(const TakeFile& file) const {
        return *group.audioMatches[file.matchIndex].audio;
    }
    /// `reason`: as in `SyncDoubt`.
    void add(SyncDoubt::Kind kind, std::string message, DoubtCure cure, std::string reason = {});
    /// Adds a doubt whose message begins with the name of the clip.
    void addOf(SyncDoubt::Kind kind, const std::string& about, DoubtCure cure);
};

/// A label whose frame number does not exist at the rate of its file. `file`: the clip's, or one of its
/// recordings.
void addLabelOutsideOfRate(ClipInDoubt& of, const MediaAsset& file);
/// Drop-frame labels beside non-drop labels, and labels counted at two rates, in a clip with sound.
void addOtherCounts(ClipInDoubt& of);
/// Picture without sound, picture that is cut off, and gaps in the sound, for a clip with settled sound.
/// `isHeard`: cameras heard the sound of that card under other clips of the folder, so the card's clock is
/// known.
void addLengthDoubts(ClipInDoubt& of, bool isHeard);

/// Adds the doubts about each single clip of the document.
void addFromEachClip(SyncDoubts& doubts, const Shoot& shoot,
                     const std::function<std::vector<SyncDoubt>(const Shoot::Clip& clip)>& doubtsOf);

} // namespace orvane
