#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"

#include <compare>
#include <cstddef>

namespace orvane {

/// How near a recording is to a clip, for units that shoot at the same time and have folders of their own.
/// Compares the folders that both are in, then the pieces of names that the folders below have in common, as
/// "A" of "A_CAM" and "A_SOUND", or "U1" of "CAM/U1" and "SOUND/U1". Greater is nearer. Pure; any thread.
struct UnitNearness {
    std::size_t commonFolders = 0;
    std::size_t commonNames = 0;

    static UnitNearness of(const MediaAsset& clip, const MediaAsset& recording);
    auto operator<=>(const UnitNearness&) const = default;
};

} // namespace orvane
