#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"

#include <map>
#include <mutex>
#include <stop_token>
#include <string>
#include <unordered_set>
#include <utility>

namespace orvane {

/// Compares the sound of recordings that count as copies of each other by name, size and start alone, without
/// dates that say so as well: two days of a recorder that begins each at the same timecode may count alike.
class CopyComparison {
  public:
    /// The recordings among those of the clips that hold other sound than what they count as a copy of. Reads
    /// some KB of each such pair, once; one that cannot be read counts as a copy. Any thread; one call waits
    /// for the other. Throws Stopped.
    std::unordered_set<UUID> falseCopies(const SyncGroupList& groups, const std::stop_token& stop = {});

  private:
    using Paths = std::pair<std::string, std::string>;

    std::mutex mutex_;
    std::map<Paths, bool> areAlike_;
};

} // namespace orvane
