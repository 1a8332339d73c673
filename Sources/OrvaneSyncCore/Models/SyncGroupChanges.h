#pragma once

#include <cstddef>
#include <vector>

namespace orvane {

/// The differences between two lists of clips, for a list on screen that repaints only these. Apply them in
/// this order: remove the rows `removed`, move the rows `moved`, insert the rows `inserted`, repaint the rows
/// `changed`.
struct SyncGroupChanges {
    struct Move {
        std::size_t from = 0; ///< row of the earlier list
        std::size_t to = 0;   ///< row of the later list

        bool operator==(const Move&) const = default;
    };
    std::vector<std::size_t> removed;  ///< rows of the earlier list, ascending
    std::vector<std::size_t> inserted; ///< rows of the later list, ascending
    std::vector<Move> moved;           ///< the fewest moves that give the new order, by `to`
    std::vector<std::size_t> changed;  ///< rows of the later list, ascending; they may have moved as well

    bool empty() const { return removed.empty() && inserted.empty() && moved.empty() && changed.empty(); }
    bool operator==(const SyncGroupChanges&) const = default;
};

} // namespace orvane
