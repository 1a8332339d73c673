#include "OrvaneSyncCore/Services/Network/LockitMatches.h"

#include "Platform/Stop.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace orvane {

/// The answer for a day concerns few of all clips, and the days are applied one after the other. So what is
/// known about all clips is kept until the clips are changed elsewhere.
LockitLayer::Applied LockitLayer::apply(SyncGroupList& groups, ClipMatchResponse answer,
                                        const std::stop_token& stop) {
    platform::StopCheck check(stop);
    if (!isUnchangedSince(groups)) {
        reapply(groups);
        places_.clear();
        for (std::size_t i = 0; i < groups.size(); ++i) places_.emplace(groups[i].video.filename, i);
        withMetadata_ = lockitClipCount(groups);
        left_ = groups;
    }
    Applied applied;
    std::vector<std::size_t> positions;
    std::vector<LockitFields> fieldsOf;
    int withMetadata = withMetadata_;
    if (answer.matches) {
        for (auto& [filename, fields] : *answer.matches) {
            check();
            const auto [first, last] = places_.equal_range(filename);
            if (first == last || fields.empty()) continue;
            const std::size_t before = positions.size();
            for (auto place = first; place != last; ++place) {
                const SyncGroup& group = groups[place->second];
                ++applied.updated;
                if (group.lockitMetadata == fields) continue;
                if (!group.hasLockitMetadata()) ++withMetadata;
                positions.push_back(place->second);
            }
            if (positions.size() == before) continue;
            fieldsOf.resize(positions.size() - 1, fields);
            fieldsOf.push_back(std::move(fields));
        }
    }
    groups.updateAt(positions,
                    [&](SyncGroup& group, std::size_t i) { group.lockitMetadata = std::move(fieldsOf[i]); });
    for (const std::size_t position : positions)
        positioned_[groups[position].id].push_back(groups.element(position));
    left_ = groups;
    applied.withMetadata = withMetadata_ = withMetadata;
    return applied;
}

void LockitLayer::reapply(SyncGroupList& groups) const {
    if (positioned_.empty() || isUnchangedSince(groups)) return;
    const SyncGroup* known = nullptr;
    groups.updateWhere(
        [&](const SyncGroup& group) {
            const auto applied = positioned_.find(group.id);
            if (applied == positioned_.end()) return false;
            known = applied->second.back().get();
            return group.lockitMetadata != known->lockitMetadata;
        },
        [&](SyncGroup& group) { group.lockitMetadata = known->lockitMetadata; });
}

SyncGroupList LockitLayer::without(SyncGroupList groups) const {
    groups.updateWhere(
        [&](const SyncGroup& group) {
            const auto applied = positioned_.find(group.id);
            return applied != positioned_.end() && group.lockitMetadata &&
                   std::ranges::any_of(applied->second, [&](const SyncGroupList::Element& given) {
                       return given->lockitMetadata == group.lockitMetadata;
                   });
        },
        [&](SyncGroup& group) {
            const SyncGroup* earlier = before_.find(group.id);
            group.lockitMetadata = earlier == nullptr ? std::nullopt : earlier->lockitMetadata;
        });
    return groups;
}

int applyLockitMatches(SyncGroupList& groups, ClipMatchResponse answer) {
    return LockitLayer(groups).apply(groups, std::move(answer)).updated;
}

int lockitClipCount(const SyncGroupList& groups) {
    return static_cast<int>(std::count_if(groups.begin(), groups.end(),
                                          [](const SyncGroup& group) { return group.hasLockitMetadata(); }));
}

} // namespace orvane
