#pragma once

#include "OrvaneSyncCore/Models/SyncGroup.h"
#include "OrvaneSyncCore/Models/SyncGroupChanges.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace orvane {

/// The clips in order, shared copy-on-write. A copy of the list costs a pointer for every 64 clips; a change
/// copies the changed group and the pointers of the groups around it. A plain value: copies are independent
/// of each other, and each may be read from any thread.
class SyncGroupList {
  public:
    using Element = std::shared_ptr<const SyncGroup>;

    /// Iterates over the groups themselves, not the pointers to them.
    class Iterator {
      public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = SyncGroup;
        using difference_type = std::ptrdiff_t;
        using pointer = const SyncGroup*;
        using reference = const SyncGroup&;

        Iterator() = default;
        Iterator(const SyncGroupList& list, std::size_t position) : list_(&list), position_(position) {}
        const SyncGroup& operator*() const { return (*list_)[position_]; }
        const SyncGroup* operator->() const { return &**this; }
        Iterator& operator++() {
            ++position_;
            return *this;
        }
        Iterator operator++(int) { return {*list_, position_++}; }
        bool operator==(const Iterator&) const = default;

      private:
        const SyncGroupList* list_ = nullptr;
        std::size_t position_ = 0;
    };

    SyncGroupList() = default;
    SyncGroupList(std::initializer_list<SyncGroup> groups);
    explicit SyncGroupList(std::vector<SyncGroup> groups);

    std::size_t size() const { return chunks_.size() * chunkSize + tail_.size(); }
    bool empty() const { return size() == 0; }
    Iterator begin() const { return {*this, 0}; }
    Iterator end() const { return {*this, size()}; }
    const SyncGroup& operator[](std::size_t index) const { return *element(index); }
    const SyncGroup& front() const { return *element(0); }
    /// For putting the same group into another list without a copy.
    const Element& element(std::size_t index) const {
        const std::size_t chunk = index / chunkSize;
        return chunk < chunks_.size() ? (*chunks_[chunk])[index % chunkSize] : tail_[index % chunkSize];
    }

    /// Null if there is no such group. If several groups have this id, the first.
    const SyncGroup* find(const UUID& id) const;

    void append(SyncGroup group);
    void append(Element group);
    /// Calls `change` with a copy of the group, which then replaces the group and keeps its id. False if
    /// there is no such group.
    template <class Change>
    bool update(const UUID& id, Change&& change) {
        makeIndex();
        const auto position = positionOf(id);
        if (!position) return false;
        updateAt(*position, change, nullptr);
        return true;
    }
    /// Changes every group for which the test holds, each before the next one is tested. Returns their
    /// number.
    template <class Test, class Change>
    std::size_t updateWhere(Test&& test, Change&& change) {
        std::size_t count = 0;
        OwnChunks own(chunks_.size());
        for (std::size_t position = 0; position < size(); ++position) {
            if (!test((*this)[position])) continue;
            updateAt(position, change, &own);
            ++count;
        }
        return count;
    }
    /// Changes many groups by their positions, in any order. Calls `change` with a copy of the group and with
    /// the index of its position in `positions`.
    template <class Change>
    void updateAt(const std::vector<std::size_t>& positions, Change&& change) {
        OwnChunks own(chunks_.size());
        for (std::size_t i = 0; i < positions.size(); ++i)
            updateAt(
                positions[i], [&](SyncGroup& group) { change(group, i); }, &own);
    }
    /// The groups for which the test holds, shared with this list.
    template <class Test>
    SyncGroupList filtered(Test&& test) const {
        SyncGroupList result;
        for (std::size_t position = 0; position < size(); ++position)
            if (test((*this)[position])) result.append(element(position));
        return result;
    }

    /// The differences between this list and an earlier state of it. If clips were only edited, chunks that
    /// both lists share are skipped, so that it costs a pointer for 64 clips. A clip counts as changed when
    /// it was edited, whether or not the edit made a difference.
    SyncGroupChanges changesSince(const SyncGroupList& before) const;

    /// Builds the index of all ids, so that `find` need not search, in this list and in every copy with the
    /// same groups. `update` builds it by itself.
    void makeIndex();

  private:
    using Chunk = std::vector<Element>;
    static constexpr std::size_t chunkSize = 64;
    /// For each chunk the copy that a change of many groups has made of it and that no other list has yet;
    /// null if there is none. Copying a chunk copies 64 counted references, which costs more than changing a
    /// group.
    using OwnChunks = std::vector<Chunk*>;

    /// The position of each id: a hash table of positions with free slots. The ids are read from the groups.
    using Index = std::vector<std::uint32_t>;
    static constexpr std::uint32_t freeSlot = 0;

    /// Absent if the lists do not have the same clips in the same order.
    std::optional<SyncGroupChanges> changesInPlace(const SyncGroupList& before) const;
    std::optional<std::size_t> positionOf(const UUID& id) const;
    void replace(std::size_t position, Element group, OwnChunks* own);
    template <class Change>
    void updateAt(std::size_t position, Change&& change, OwnChunks* own) {
        auto copy = std::make_shared<SyncGroup>(*element(position));
        change(*copy);
        replace(position, std::move(copy), own);
    }

    std::vector<std::shared_ptr<const Chunk>> chunks_; ///< full, shared with other lists
    Chunk tail_;                                       ///< the groups after those, fewer than a chunk
    std::shared_ptr<const Index> index_;               ///< null until it is needed
};

} // namespace orvane
