#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"

#include <compare>
#include <cstddef>
#include <map>
#include <string_view>
#include <utility>

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

/// The same, computed once for each pair of folders. The files must live as long as this object. One thread
/// at a time.
class NearnessOfFolders {
  public:
    UnitNearness of(const MediaAsset& clip, const MediaAsset& recording);

  private:
    std::map<std::pair<std::string_view, std::string_view>, UnitNearness> known_;
};

} // namespace orvane
