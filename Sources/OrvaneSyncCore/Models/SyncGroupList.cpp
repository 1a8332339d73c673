#include "OrvaneSyncCore/Models/SyncGroupList.h"

#include <algorithm>

namespace orvane {

SyncGroupList::SyncGroupList(std::initializer_list<SyncGroup> groups) {
    elements_.reserve(groups.size());
    for (const SyncGroup& group : groups) append(group);
}

SyncGroupList::SyncGroupList(std::vector<SyncGroup> groups) {
    elements_.reserve(groups.size());
    for (SyncGroup& group : groups) append(std::move(group));
}

const SyncGroup* SyncGroupList::find(const UUID& id) const {
    const auto found = std::ranges::find(elements_, id, [](const Element& element) { return element->id; });
    return found == elements_.end() ? nullptr : found->get();
}

void SyncGroupList::append(SyncGroup group) {
    elements_.push_back(std::make_shared<const SyncGroup>(std::move(group)));
}

SyncGroup* SyncGroupList::ownCopy(const UUID& id) {
    const auto found = std::ranges::find(elements_, id, [](const Element& element) { return element->id; });
    if (found == elements_.end()) return nullptr;
    return &ownCopy(*found);
}

SyncGroup& SyncGroupList::ownCopy(Element& element) {
    auto copy = std::make_shared<SyncGroup>(*element);
    SyncGroup& group = *copy;
    element = std::move(copy);
    return group;
}

} // namespace orvane
