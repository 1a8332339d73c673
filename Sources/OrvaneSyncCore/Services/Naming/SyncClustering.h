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

/// The cameras of one take: clips with the same base name of one shoot. Two clips whose days are known,
/// differ and lie more than six hours apart are of two shoots.
struct SyncCluster {
    std::string key;
    std::vector<UUID> memberIDs; ///< two or more, in the order of the clips

    bool operator==(const SyncCluster&) const = default;
};

/// Groups clips by name and day. Clips that are excluded from multicam stand alone. Pure; any thread.
namespace SyncClustering {

/// The name by which a clip finds its siblings.
std::string key(const SyncGroup& group, GroupNaming::Source source,
                const std::optional<std::string>& customPattern);

/// In the order of their keys.
std::vector<SyncCluster> clusters(const SyncGroupList& groups, GroupNaming::Source source,
                                  const std::optional<std::string>& customPattern);

/// The clips of the list with this clip's key and of its shoot, this clip among them where it stands in the
/// list; an excluded clip has only itself. For one clip: it names every clip of the list. For many clips take
/// an `Index`.
SyncGroupList siblings(const SyncGroup& group, const SyncGroupList& groups, GroupNaming::Source source,
                       const std::optional<std::string>& customPattern);

/// The keys of a whole list, each named once: for callers that ask about every clip of it. Holds its own copy
/// of the list.
class Index {
  public:
    Index(SyncGroupList groups, GroupNaming::Source source, std::optional<std::string> customPattern);

    /// The key of the clip at this place of the list.
    const std::string& key(std::size_t position) const { return keys_.at(position); }
    /// What `siblings` would count for the clip at this place.
    std::size_t siblingCount(std::size_t position) const;
    /// From 0, which of the shoots that have clips of its key the clip at this place belongs to.
    std::size_t shoot(std::size_t position) const { return shoots_.at(position); }
    /// As `SyncClustering::siblings` in this list.
    SyncGroupList siblings(const SyncGroup& group) const;

  private:
    friend std::vector<SyncCluster> clusters(const SyncGroupList&, GroupNaming::Source,
                                             const std::optional<std::string>&);

    SyncGroupList groups_;
    GroupNaming::Source source_;
    std::optional<std::string> customPattern_;
    using Members = std::vector<std::size_t>; ///< places in the list

    /// Parts the clips of one key by shoot: each part in the order of the list, the parts by time. Clips
    /// without a day are of the first part.
    std::vector<Members> shootsOf(const Members& members, Places& places) const;

    std::vector<std::string> keys_;
    std::unordered_map<std::string, std::vector<Members>> takes_; ///< by key; excluded clips left out
    std::vector<std::size_t> takeSizes_, shoots_;                 ///< by place
};

} // namespace SyncClustering
} // namespace orvane
