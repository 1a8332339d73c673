#include "OrvaneSyncCore/Models/SyncGroupList.h"

#include <bit>
#include <functional>

namespace orvane {

SyncGroupList::SyncGroupList(std::initializer_list<SyncGroup> groups)
    : SyncGroupList(std::vector<SyncGroup>(groups)) {}

/// Many groups at once are allocated in one block, which is kept as long as any of them is in a list: freeing
/// thousands of large blocks among small ones costs as much as allocating them.
SyncGroupList::SyncGroupList(std::vector<SyncGroup> groups) {
    const auto all = std::make_shared<const std::vector<SyncGroup>>(std::move(groups));
    for (const SyncGroup& group : *all) append(Element(all, &group));
}

const SyncGroup* SyncGroupList::find(const UUID& id) const {
    const auto position = positionOf(id);
    return position ? &(*this)[*position] : nullptr;
}

void SyncGroupList::append(SyncGroup group) { append(std::make_shared<const SyncGroup>(std::move(group))); }

void SyncGroupList::append(Element group) {
    index_.reset();
    tail_.push_back(std::move(group));
    if (tail_.size() < chunkSize) return;
    chunks_.push_back(std::make_shared<const Chunk>(std::move(tail_)));
    tail_.clear();
}

void SyncGroupList::makeIndex() {
    if (index_) return;
    constexpr std::size_t slotsPerGroup = 2;
    Index index(std::bit_ceil(slotsPerGroup * size() + 1), freeSlot);
    const std::size_t mask = index.size() - 1;
    for (std::size_t position = 0; position < size(); ++position) {
        std::size_t slot = std::hash<UUID>()((*this)[position].id) & mask;
        while (index[slot] != freeSlot) slot = (slot + 1) & mask;
        index[slot] = static_cast<std::uint32_t>(position + 1);
    }
    index_ = std::make_shared<const Index>(std::move(index));
}

std::optional<std::size_t> SyncGroupList::positionOf(const UUID& id) const {
    if (!index_) {
        for (std::size_t position = 0; position < size(); ++position)
            if ((*this)[position].id == id) return position;
        return std::nullopt;
    }
    const std::size_t mask = index_->size() - 1;
    // Equal ids are in the order of their positions, so the first one is found first.
    for (std::size_t slot = std::hash<UUID>()(id) & mask; (*index_)[slot] != freeSlot;
         slot = (slot + 1) & mask)
        if (const std::size_t position = (*index_)[slot] - 1; (*this)[position].id == id) return position;
    return std::nullopt;
}

void SyncGroupList::replace(std::size_t position, Element group, OwnChunks* own) {
    const std::size_t chunk = position / chunkSize;
    if (chunk == chunks_.size()) {
        tail_[position % chunkSize] = std::move(group);
        return;
    }
    Chunk* target = own ? (*own)[chunk] : nullptr;
    if (!target) {
        const auto copy = std::make_shared<Chunk>(*chunks_[chunk]);
        target = copy.get();
        chunks_[chunk] = copy;
        if (own) (*own)[chunk] = target;
    }
    (*target)[position % chunkSize] = std::move(group);
}

} // namespace orvane
