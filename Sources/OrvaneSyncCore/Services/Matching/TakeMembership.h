#pragma once

#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace orvane {

/// Which of the files that meet one clip hold one recording. A recorder writes one file with all channels, or
/// one file per channel, or a further file when one is full, and may write everything to a second card as
/// well.
///
/// Files are side by side if they start within half a second of each other and are of one take: by the scene
/// and take in the metadata of both, else by names that differ only in the channel (`ChannelName`). Files
/// follow each other if each begins within half a second of the end of the one before, or within a minute if
/// the names count on (`SplitRecordingDetector::mayContinue`): then a part was lost between them. If the
/// picture is known, a later or earlier take of that recorder also follows, if it begins within a minute and
/// covers at least half as much of the picture as the first candidate: the camera rolled on. In all cases
/// nothing known may show different recorders, sound rolls, sample rates or days. A copy is a file of the
/// same name, size and start in another folder; if a size is not known, of as many samples and channels; of
/// any size if one of the two ends before the length that its header states.
struct TakeMembership {
    struct Candidate {
        const MediaAsset* audio = nullptr;
        SyncEngine::TCRange range; ///< on any axis that all candidates share
    };
    struct Member {
        std::size_t candidate;
        /// Files that hold the same channels one after the other share a lane. From 0, in the order of the
        /// paths.
        std::size_t lane;
    };

    std::vector<Member> members;         ///< of the take of the first candidate; by lane, then by start
    std::vector<std::size_t> alternates; ///< other recordings, in the order of the candidates
    std::vector<std::size_t> mirrors; ///< copies of members or of alternates, in the order of the candidates

    /// The first candidate is the clip's primary recording. `picture`: the clip's range on the axis of the
    /// candidates. Pure; any thread.
    static TakeMembership of(std::span<const Candidate> candidates,
                             const std::optional<SyncEngine::TCRange>& picture = std::nullopt);
    /// Whether a file may be a copy of another one that was cut short: it has the name, the start and, as far
    /// as known, the recorder of the other, and ends earlier.
    static bool isCutShort(const Candidate& file, const Candidate& other);
};

} // namespace orvane
