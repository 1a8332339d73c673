#pragma once

#include "OrvaneSyncCore/Models/SyncGroup.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane {

/// Units that film different scenes at the same hours, each with cameras and a recorder in folders of its
/// own. Two cameras of one scene with a recorder each are not two units: for at least half of the time that
/// one of them rolls, the other one rolls as well. One thread at a time.
class SeparateUnits {
  public:
    /// A clip and its range. The group must outlive this object.
    struct Clip {
        const SyncGroup* group;
        SyncEngine::TCRange range; ///< seconds since midnight
        std::optional<long> day;   ///< days since 1970
    };
    explicit SeparateUnits(std::vector<Clip> clips);

    /// Whether the first recordings of two clips are of two units: each is nearer to its own clip by its
    /// folders, and does not state the scene and take of the other.
    bool have(const SyncGroup& a, const SyncGroup& b) const;
    /// The same, if it is not clear: there are few clips, or they roll together for more of the time than two
    /// units mostly do, and for less of it than cameras of one scene mostly do.
    bool mayHave(const SyncGroup& a, const SyncGroup& b) const;
    /// Whether two recordings are of two units by the clips that have each of them first, wherever their
    /// folders are, and do not state one scene and take.
    bool areOfTwo(const MediaAsset& one, const MediaAsset& other) const;
    /// Whether a recording is of another unit than the clip's first recording, which is nearer to the clip.
    bool isOfOther(const SyncGroup& clip, const MediaAsset& recording) const;
    /// The highest folder that contains one file and not the other, with a slash at the end; empty for files
    /// of one folder.
    static std::string folderApart(const MediaAsset& of, const MediaAsset& from);

  private:
    enum class Relation : std::uint8_t { oneScene, unclear, twoUnits };
    Relation relation(const MediaAsset& a, const MediaAsset& b) const;
    Relation relation(const SyncGroup& a, const SyncGroup& b) const;
    std::vector<const Clip*> clipsOf(std::string_view folder) const;

    std::vector<Clip> clips_;                                               ///< those that have sound
    mutable std::map<std::pair<std::string, std::string>, Relation> known_; ///< for pairs of folders of sound
};

} // namespace orvane
