#include "OrvaneSyncCore/Models/SyncGroupList.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <unordered_map>

namespace orvane {

namespace {

/// A clip that is in both lists.
struct Kept {
    std::size_t from;
    std::size_t to;
};

/// The moves, by `to`: all clips except one longest run whose earlier rows ascend.
std::vector<SyncGroupChanges::Move> moves(const std::vector<Kept>& kept) {
    constexpr std::size_t none = static_cast<std::size_t>(-1);
    std::vector<std::size_t> ends;                      // the last clip of the best run of each length, as
                                                        // index in `kept`
    std::vector<std::size_t> before(kept.size(), none); // the index before each clip in its best run
    for (std::size_t i = 0; i < kept.size(); ++i) {
        const auto place =
            std::ranges::lower_bound(ends, kept[i].from, {}, [&](std::size_t end) { return kept[end].from; });
        if (place != ends.begin()) before[i] = *std::prev(place);
        if (place == ends.end())
            ends.push_back(i);
        else
            *place = i;
    }
    std::vector<bool> stays(kept.size());
    for (std::size_t i = ends.empty() ? none : ends.back(); i != none; i = before[i]) stays[i] = true;
    std::vector<SyncGroupChanges::Move> result;
    for (std::size_t i = 0; i < kept.size(); ++i)
        if (!stays[i]) result.push_back({kept[i].from, kept[i].to});
    return result;
}

} // namespace

std::optional<SyncGroupChanges> SyncGroupList::changesInPlace(const SyncGroupList& before) const {
    if (size() != before.size()) return std::nullopt;
    SyncGroupChanges changes;
    for (std::size_t row = 0; row < size();) {
        const std::size_t chunk = row / chunkSize;
        if (chunk < chunks_.size() && chunks_[chunk] == before.chunks_[chunk]) {
            row += chunkSize;
            continue;
        }
        for (const std::size_t end = std::min(row + chunkSize, size()); row < end; ++row) {
            if (element(row) == before.element(row)) continue;
            if (element(row)->id != before.element(row)->id) return std::nullopt;
            changes.changed.push_back(row);
        }
    }
    return changes;
}

SyncGroupChanges SyncGroupList::changesSince(const SyncGroupList& before) const {
    if (auto changes = changesInPlace(before)) return *std::move(changes);
    // Rows that differ are between a beginning and an end that both lists share.
    const std::size_t shorter = std::min(size(), before.size());
    std::size_t first = 0, same = 0;
    while (first < shorter && element(first) == before.element(first)) ++first;
    while (same < shorter - first && element(size() - same - 1) == before.element(before.size() - same - 1))
        ++same;

    SyncGroupChanges changes;
    const std::size_t end = size() - same, endBefore = before.size() - same;
    std::unordered_map<UUID, std::size_t> rows; // the row in the earlier list, for the first clip of each id
    for (std::size_t row = first; row < endBefore; ++row) rows.try_emplace(before[row].id, row);
    std::vector<Kept> kept;
    std::vector<bool> isKept(endBefore - first);
    for (std::size_t row = first; row < end; ++row) {
        const auto found = rows.find((*this)[row].id);
        if (found == rows.end() || isKept[found->second - first]) {
            changes.inserted.push_back(row);
            continue;
        }
        isKept[found->second - first] = true;
        kept.push_back({found->second, row});
        if (element(row) != before.element(found->second)) changes.changed.push_back(row);
    }
    for (std::size_t row = first; row < endBefore; ++row)
        if (!isKept[row - first]) changes.removed.push_back(row);
    changes.moved = moves(kept);
    return changes;
}

} // namespace orvane
