#pragma once

#include "OrvaneSyncCore/Models/SyncGroup.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane {

/// Units that film different scenes at the same hours, each with cameras and a recorder in folders of its
/// own. Two cameras of one scene, each with its own recorder, are none: most of the clips of one of them roll
/// with one of the other's. One thread at a time.
class SeparateUnits {
  public:
    /// A clip that must outlive this, where it lies.
    struct Clip {
        const SyncGroup* group;
        SyncEngine::TCRange range; ///< seconds since midnight
        std::optional<long> day;   ///< days since 1970
    };
    explicit SeparateUnits(std::vector<Clip> clips);

    /// Whether the first recordings of two clips are of two units: each lies nearer to its own clip by its
    /// folders, and does not say that it is of the other's scene and take.
    bool have(const SyncGroup& a, const SyncGroup& b) const;
    /// Whether a recording is of another unit than the clip's first one.
    bool isOfOther(const SyncGroup& clip, const MediaAsset& recording) const;
    /// The highest folder that one file lies in and the other doesn't, with a slash behind it; empty for
    /// files of one folder.
    static std::string folderApart(const MediaAsset& of, const MediaAsset& from);

  private:
    bool areApart(const MediaAsset& a, const MediaAsset& b) const;
    std::vector<const Clip*> clipsOf(std::string_view folder) const;

    std::vector<Clip> clips_; ///< that have sound
    mutable std::map<std::pair<std::string, std::string>, bool>
        known_; ///< by folder of sound, each with each
};

} // namespace orvane
