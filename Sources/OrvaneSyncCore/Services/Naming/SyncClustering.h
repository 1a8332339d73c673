#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Matching/Recordings.h"
#include "OrvaneSyncCore/Services/Naming/GroupNaming.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace orvane {

/// The cameras of one take: clips of one shoot with the same base name. Two clips are of different shoots if
/// their days are known, differ, and they are more than six hours apart.
struct SyncCluster {
    std::string key;
    std::vector<UUID> memberIDs; ///< two or more, in the order of the clips

    bool operator==(const SyncCluster&) const = default;
};

/// Groups clips by name and day. Clips that are excluded from multicam are not grouped. Pure; any thread.
namespace SyncClustering {

/// The name that the siblings of a take have in common.
std::string key(const SyncGroup& group, GroupNaming::Source source,
                const std::optional<std::string>& customPattern);

/// In the order of their keys.
std::vector<SyncCluster> clusters(const SyncGroupList& groups, GroupNaming::Source source,
                                  const std::optional<std::string>& customPattern);

/// The clips in the list with this clip's key and of its shoot, including the clip itself if it is in the
/// list; for an excluded clip only itself. Makes the names of the whole list at each call: for many clips use
/// an `Index`.
SyncGroupList siblings(const SyncGroup& group, const SyncGroupList& groups, GroupNaming::Source source,
                       const std::optional<std::string>& customPattern);

/// The keys of a whole list, each made once: for callers that ask about every clip in it. Holds its own copy
/// of the list.
class Index {
  public:
    Index(SyncGroupList groups, GroupNaming::Source source, std::optional<std::string> customPattern);

    /// The key of the clip at this place of the list.
    const std::string& key(std::size_t position) const { return keys_.at(position); }
    /// The number of clips that `siblings` would return for the clip at this place.
    std::size_t siblingCount(std::size_t position) const;
    /// The number of the shoot, from 0, to which the clip at this place belongs, among the shoots with clips
    /// of its key.
    std::size_t shoot(std::size_t position) const { return shoots_.at(position); }
    /// The same as `SyncClustering::siblings` in this list.
    SyncGroupList siblings(const SyncGroup& group) const;

  private:
    friend std::vector<SyncCluster> clusters(const SyncGroupList&, GroupNaming::Source,
                                             const std::optional<std::string>&);

    SyncGroupList groups_;
    GroupNaming::Source source_;
    std::optional<std::string> customPattern_;
    using Members = std::vector<std::size_t>; ///< places in the list

    /// Divides the clips of one key by shoot: shoots by time, the clips of each in the order of the list.
    /// Clips without a day belong to the first shoot.
    std::vector<Members> shootsOf(const Members& members, Places& places) const;

    std::vector<std::string> keys_;
    std::unordered_map<std::string, std::vector<Members>> takes_; ///< by key; excluded clips left out
    std::vector<std::size_t> takeSizes_, shoots_;                 ///< by place
};

} // namespace SyncClustering
} // namespace orvane
