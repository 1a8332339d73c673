#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"

#include <compare>
#include <cstddef>

namespace orvane {

/// How near a recording lies to a clip, as units that shoot at once keep folders of their own: by the folders
/// that both lie in, then by a piece of the names in which their folders begin to differ, as "A" of "A_CAM"
/// and "A_SOUND". The greater, the nearer. Pure; any thread.
struct UnitNearness {
    std::size_t commonFolders = 0;
    bool haveOneName = false;

    static UnitNearness of(const MediaAsset& clip, const MediaAsset& recording);
    auto operator<=>(const UnitNearness&) const = default;
};

} // namespace orvane
