#pragma once

#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

namespace orvane {

/// Ranges in the order of their starts: those that overlap another range are found without comparing all.
class RangeIndex {
  public:
    /// An item whose range overlaps, by the number with which it was added.
    struct Hit {
        std::size_t item;
        double overlapSeconds;
    };

    void add(const SyncEngine::TCRange& range, std::size_t item) { entries_.push_back({range, 0, item}); }
    /// Must be called after the last `add` and before the first `appendOverlapping`.
    void finish() {
        std::ranges::sort(entries_, {}, [](const Entry& entry) { return entry.range.startSeconds; });
        double latest = -std::numeric_limits<double>::infinity();
        for (Entry& entry : entries_) latest = entry.latestEnd = std::max(latest, entry.range.endSeconds);
    }
    /// The hits are in no defined order.
    void appendOverlapping(const SyncEngine::TCRange& range, std::vector<Hit>& hits) const {
        const auto startsTooLate = std::ranges::lower_bound(
            entries_, range.endSeconds, {}, [](const Entry& entry) { return entry.range.startSeconds; });
        for (auto entry = startsTooLate; entry != entries_.begin();) {
            --entry;
            if (entry->latestEnd <= range.startSeconds) break; // all entries that start earlier end here too
            if (const auto overlap = SyncEngine::overlapDuration(entry->range, range))
                hits.push_back({entry->item, *overlap});
        }
    }

  private:
    struct Entry {
        SyncEngine::TCRange range;
        double latestEnd; ///< of this entry and all before it
        std::size_t item;
    };
    std::vector<Entry> entries_;
};

} // namespace orvane
