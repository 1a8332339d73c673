#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"

#include <vector>

namespace orvane {

/// An audio file that is matched to no video. Its identity is that of its audio.
struct WildTrack {
    /// An absent or empty name gives the file's name without extension.
    explicit WildTrack(MediaAsset audio, const std::optional<std::string>& customName = std::nullopt);

    UUID id; ///< always the id of `audio`
    MediaAsset audio;
    std::string customName;  ///< the name that is shown and exported
    bool isApproved = false; ///< is exported
};

/// Copies names and approvals from `decided` to the tracks of the same audio: of the same id, or else of the
/// same file, as a file that is probed again may get another id, or else of the file that was moved.
void carryNamesAndApprovals(std::vector<WildTrack>& tracks, const std::vector<WildTrack>& decided);

JSON toJSON(const WildTrack& track);
template <>
WildTrack fromJSON<WildTrack>(const JSON& json);

} // namespace orvane
