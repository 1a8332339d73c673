#pragma once

#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

namespace orvane {

/// Ranges in the order of their starts, so that those that overlap another are found without a look at all
/// of them.
class RangeIndex {
  public:
    /// Something that overlaps the range in question, by the number under which it was added.
    struct Hit {
        std::size_t item;
        double overlapSeconds;
    };

    void add(const SyncEngine::TCRange& range, std::size_t item) { entries_.push_back({range, 0, item}); }
    /// After the last `add`, before the first `appendOverlapping`.
    void finish() {
        std::ranges::sort(entries_, {}, [](const Entry& entry) { return entry.range.startSeconds; });
        double latest = -std::numeric_limits<double>::infinity();
        for (Entry& entry : entries_) latest = entry.latestEnd = std::max(latest, entry.range.endSeconds);
    }
    /// In no order that means anything.
    void appendOverlapping(const SyncEngine::TCRange& range, std::vector<Hit>& hits) const {
        const auto startsTooLate = std::ranges::lower_bound(
            entries_, range.endSeconds, {}, [](const Entry& entry) { return entry.range.startSeconds; });
        for (auto entry = startsTooLate; entry != entries_.begin();) {
            --entry;
            if (entry->latestEnd <= range.startSeconds) break; // and so ends all that starts earlier
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
