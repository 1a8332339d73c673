#pragma once

#include "OrvaneSyncApp/Controllers/OpenWork.h"

#include <cstdint>
#include <string>
#include <vector>

namespace orvane {

// What the lists of clips use of a clip besides its texts. Pure functions; interface thread.

/// How certain it is that a clip has the right sound.
enum class ClipCertainty : std::uint8_t {
    settled,  ///< matched, without a doubt
    doubtful, ///< matched with a doubt, or several recordings to choose from
    missing,  ///< without sound, and without the decision that there should be none
    silent    ///< without sound by decision
};
ClipCertainty certaintyOf(const SyncGroup& group, bool hasDoubts);

/// The text that a search looks in: the clip's name, its original name if the editor has renamed it, its
/// files as rows show them, and the scenes of its recordings.
std::string searchedText(const SyncGroup& group, const std::string& name, const OpenWork& work);

/// A recording that can be chosen for a clip.
struct RecordingCandidate {
    UUID matchID; ///< of its first file
    std::string text;
    bool isFirst = false; ///< the one that is heard
};
/// Empty unless the clip has several recordings and is not locked.
std::vector<RecordingCandidate> recordingCandidates(const OpenWork& work, const UUID& groupID);

} // namespace orvane
