#include "OrvaneSyncCore/Services/Naming/SyncClustering.h"

#include "Platform/Text.h"

#include <algorithm>
#include <utility>

namespace orvane::SyncClustering {

std::string key(const SyncGroup& group, GroupNaming::Source source,
                const std::optional<std::string>& customPattern) {
    return GroupNaming::baseName(group, source, customPattern, GroupNaming::defaultSeparator);
}

std::vector<SyncCluster> clusters(const SyncGroupList& groups, GroupNaming::Source source,
                                  const std::optional<std::string>& customPattern) {
    const Index index(groups, source, customPattern);
    std::vector<std::pair<std::string, SyncCluster>> sorted; // with sort keys
    for (std::size_t i = 0; i < groups.size(); ++i) {
        if (groups[i].isExcludedFromMulticam()) continue;
        const auto& members = index.members_.at(index.keys_[i]);
        if (members.size() < 2 || members.front() != i) continue;
        SyncCluster cluster{index.keys_[i], {}};
        for (const std::size_t member : members) cluster.memberIDs.push_back(groups[member].id);
        sorted.emplace_back(platform::text::localizedStandardSortKey(cluster.key), std::move(cluster));
    }
    std::ranges::stable_sort(sorted, {}, [](const auto& entry) -> const std::string& { return entry.first; });
    std::vector<SyncCluster> result;
    result.reserve(sorted.size());
    for (auto& entry : sorted) result.push_back(std::move(entry.second));
    return result;
}

SyncGroupList siblings(const SyncGroup& group, const SyncGroupList& groups, GroupNaming::Source source,
                       const std::optional<std::string>& customPattern) {
    if (group.isExcludedFromMulticam()) return {group};
    const std::string own = key(group, source, customPattern);
    return groups.filtered([&](const SyncGroup& other) {
        return !other.isExcludedFromMulticam() && key(other, source, customPattern) == own;
    });
}

Index::Index(SyncGroupList groups, GroupNaming::Source source, std::optional<std::string> customPattern)
    : groups_(std::move(groups)), source_(source), customPattern_(std::move(customPattern)) {
    keys_.reserve(groups_.size());
    for (const SyncGroup& group : groups_) {
        keys_.push_back(SyncClustering::key(group, source_, customPattern_));
        if (!group.isExcludedFromMulticam()) members_[keys_.back()].push_back(keys_.size() - 1);
    }
}

std::size_t Index::siblingCount(std::size_t position) const {
    return groups_[position].isExcludedFromMulticam() ? 1 : members_.at(keys_[position]).size();
}

SyncGroupList Index::siblings(const SyncGroup& group) const {
    if (group.isExcludedFromMulticam()) return {group};
    SyncGroupList result;
    const auto found = members_.find(SyncClustering::key(group, source_, customPattern_));
    if (found != members_.end())
        for (const std::size_t member : found->second) result.append(groups_.element(member));
    return result;
}

} // namespace orvane::SyncClustering
