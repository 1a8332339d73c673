#pragma once

#include "OrvaneSyncCore/Models/SyncGroup.h"

#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

namespace orvane {

/// The clips, in order, shared copy-on-write element by element: a copy of the list costs pointers, and a
/// change copies the one group that changes. A plain value: copies are independent of each other.
class SyncGroupList {
  public:
    using Element = std::shared_ptr<const SyncGroup>;

    /// Gives the groups themselves, not the pointers to them.
    class Iterator {
      public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = SyncGroup;
        using difference_type = std::ptrdiff_t;
        using pointer = const SyncGroup*;
        using reference = const SyncGroup&;

        Iterator() = default;
        explicit Iterator(std::vector<Element>::const_iterator at) : at_(at) {}
        const SyncGroup& operator*() const { return **at_; }
        const SyncGroup* operator->() const { return at_->get(); }
        Iterator& operator++() {
            ++at_;
            return *this;
        }
        Iterator operator++(int) { return Iterator(at_++); }
        bool operator==(const Iterator&) const = default;

      private:
        std::vector<Element>::const_iterator at_;
    };

    SyncGroupList() = default;
    SyncGroupList(std::initializer_list<SyncGroup> groups);
    explicit SyncGroupList(std::vector<SyncGroup> groups);

    std::size_t size() const { return elements_.size(); }
    bool empty() const { return elements_.empty(); }
    Iterator begin() const { return Iterator(elements_.begin()); }
    Iterator end() const { return Iterator(elements_.end()); }
    const SyncGroup& operator[](std::size_t index) const { return *elements_[index]; }
    const SyncGroup& front() const { return *elements_.front(); }
    /// To put the same group into another list without a copy.
    const Element& element(std::size_t index) const { return elements_[index]; }

    /// Null when there is no such group.
    const SyncGroup* find(const UUID& id) const;

    void append(SyncGroup group);
    void append(Element group) { elements_.push_back(std::move(group)); }
    /// Calls `change` with a group of this list's own; false when there is no such group.
    template <class Change>
    bool update(const UUID& id, Change&& change) {
        SyncGroup* group = ownCopy(id);
        if (group == nullptr) return false;
        std::forward<Change>(change)(*group);
        return true;
    }
    /// The same by position, for a walk over the whole list.
    template <class Change>
    void updateAt(std::size_t index, Change&& change) {
        std::forward<Change>(change)(ownCopy(elements_[index]));
    }
    /// The groups for which the test holds, shared with this list.
    template <class Test>
    SyncGroupList filtered(Test&& test) const {
        SyncGroupList result;
        for (const Element& element : elements_)
            if (test(*element)) result.append(element);
        return result;
    }

  private:
    SyncGroup* ownCopy(const UUID& id);
    /// A group that another list holds too must not change under it.
    static SyncGroup& ownCopy(Element& element);

    std::vector<Element> elements_;
};

} // namespace orvane
