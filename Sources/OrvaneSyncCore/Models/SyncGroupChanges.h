#pragma once

#include <cstddef>
#include <vector>

namespace orvane {

/// What tells one list of clips from an earlier one, for a list on screen that repaints only that: take the
/// rows out that went, move those that moved, put those in that came, repaint those that changed.
struct SyncGroupChanges {
    struct Move {
        std::size_t from = 0; ///< row of the earlier list
        std::size_t to = 0;   ///< row of the later list

        bool operator==(const Move&) const = default;
    };
    std::vector<std::size_t> went;    ///< rows of the earlier list, ascending
    std::vector<std::size_t> came;    ///< rows of the later list, ascending
    std::vector<Move> moved;          ///< as few as bring the others into order, by `to`
    std::vector<std::size_t> changed; ///< rows of the later list, ascending; may have moved, too

    bool empty() const { return went.empty() && came.empty() && moved.empty() && changed.empty(); }
    bool operator==(const SyncGroupChanges&) const = default;
};

} // namespace orvane
