#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"

#include <vector>

namespace orvane {

/// An audio file that no video claims. Its identity is that of its audio.
struct WildTrack {
    /// An absent or empty name gives the file's name without extension.
    explicit WildTrack(MediaAsset audio, const std::optional<std::string>& customName = std::nullopt);

    UUID id; ///< always the id of `audio`
    MediaAsset audio;
    std::string customName;  ///< shown and exported
    bool isApproved = false; ///< goes into the export
};

/// Gives the tracks the names and approvals that tracks of the same audio have in `decided`: of the same id,
/// else of the same file, as a file that is probed again may get another id.
void carryNamesAndApprovals(std::vector<WildTrack>& tracks, const std::vector<WildTrack>& decided);

JSON toJSON(const WildTrack& track);
template <>
WildTrack fromJSON<WildTrack>(const JSON& json);

} // namespace orvane
