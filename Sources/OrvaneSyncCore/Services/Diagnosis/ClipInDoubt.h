#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"

#include <functional>
#include <string>
#include <vector>

namespace orvane {

/// A clip by itself, its take, and what is doubted of the two. The references must live as long as this.
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
    /// `reason`: as that of a doubt.
    void add(SyncDoubt::Kind kind, std::string message, DoubtCure cure, std::string reason = {});
    /// What begins with the name of the clip.
    void addOf(SyncDoubt::Kind kind, const std::string& about, DoubtCure cure);
};

/// A label with a frame that its file's rate does not have. `file`: the clip's, or one of its recordings.
void addLabelOutsideOfRate(ClipInDoubt& of, const MediaAsset& file);
/// Drop frame beside non-drop labels, and labels counted at two rates, of a clip with sound.
void addOtherCounts(ClipInDoubt& of);
/// Picture without sound, picture that is cut off, and gaps in the sound, of a clip with settled sound.
/// `isHeard`: cameras heard the sound of that card under other clips of the folder, so that its clock is
/// known.
void addLengthDoubts(ClipInDoubt& of, bool isHeard);

/// Of each clip that stands in the document.
void addFromEachClip(SyncDoubts& doubts, const Shoot& shoot,
                     const std::function<std::vector<SyncDoubt>(const Shoot::Clip& clip)>& doubtsOf);

} // namespace orvane
