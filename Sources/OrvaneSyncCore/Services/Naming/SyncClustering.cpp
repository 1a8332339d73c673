#include "OrvaneSyncCore/Services/Naming/SyncClustering.h"

#include "OrvaneSyncCore/Utilities/Day.h"
#include "Platform/Text.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>
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
    std::unordered_set<std::string_view> seen;
    for (std::size_t i = 0; i < groups.size(); ++i) {
        const std::string& key = index.keys_[i];
        if (groups[i].isExcludedFromMulticam() || !seen.insert(key).second) continue;
        for (const auto& members : index.takes_.at(key)) {
            if (members.size() < 2) continue;
            SyncCluster cluster{key, {}};
            for (const std::size_t member : members) cluster.memberIDs.push_back(groups[member].id);
            sorted.emplace_back(platform::text::localizedStandardSortKey(key), std::move(cluster));
        }
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
    return Index(groups, source, customPattern).siblings(group);
}

Index::Index(SyncGroupList groups, GroupNaming::Source source, std::optional<std::string> customPattern)
    : groups_(std::move(groups)), source_(source), customPattern_(std::move(customPattern)) {
    keys_.reserve(groups_.size());
    std::unordered_map<std::string_view, Members> byKey;
    for (const SyncGroup& group : groups_)
        keys_.push_back(SyncClustering::key(group, source_, customPattern_));
    for (std::size_t i = 0; i < keys_.size(); ++i) byKey[keys_[i]].push_back(i);

    Places places(MatchRules::neighbours());
    const auto isTake = [](const auto& entry) { return entry.second.size() > 1; };
    if (std::ranges::any_of(byKey, isTake))
        for (const SyncGroup& group : groups_) places.learn(group.video);
    takeSizes_.assign(groups_.size(), 1);
    shoots_.assign(groups_.size(), 0);
    for (auto& [key, members] : byKey) {
        auto shoots =
            members.size() > 1 ? shootsOf(members, places) : std::vector<Members>{std::move(members)};
        for (std::size_t shoot = 0; shoot < shoots.size(); ++shoot) {
            Members& take = shoots[shoot];
            for (const std::size_t member : take) shoots_[member] = shoot;
            std::erase_if(take, [&](std::size_t member) { return groups_[member].isExcludedFromMulticam(); });
            for (const std::size_t member : take) takeSizes_[member] = take.size();
        }
        takes_.emplace(key, std::move(shoots));
    }
}

std::vector<Index::Members> Index::shootsOf(const Members& members, Places& places) const {
    constexpr double longestPauseSeconds = 21600;
    struct Moment {
        std::size_t member;
        std::optional<long> day;
        double seconds; ///< since the start of 1970
    };
    std::vector<Moment> moments;
    for (const std::size_t member : members) {
        const auto place = places.of(groups_[member].video);
        const auto day = place ? place->knownDay() : std::nullopt;
        moments.push_back(
            {member, day, day ? static_cast<double>(*day) * secondsADay + place->range.startSeconds : 0});
    }
    std::ranges::stable_sort(moments, [](const Moment& a, const Moment& b) {
        return a.day.has_value() != b.day.has_value() ? !a.day : a.seconds < b.seconds;
    });
    std::vector<Members> shoots;
    const Moment* before = nullptr;
    for (const Moment& moment : moments) {
        const bool isOther = before != nullptr && before->day && before->day != moment.day &&
                             moment.seconds - before->seconds > longestPauseSeconds;
        if (shoots.empty() || isOther) shoots.emplace_back();
        shoots.back().push_back(moment.member);
        before = &moment;
    }
    for (Members& shoot : shoots) std::ranges::sort(shoot);
    return shoots;
}

std::size_t Index::siblingCount(std::size_t position) const { return takeSizes_.at(position); }

SyncGroupList Index::siblings(const SyncGroup& group) const {
    if (group.isExcludedFromMulticam()) return {group};
    const auto found = takes_.find(SyncClustering::key(group, source_, customPattern_));
    if (found == takes_.end()) return {};
    const auto holds = [&](const Members& take) {
        return std::ranges::any_of(take, [&](std::size_t member) { return groups_[member].id == group.id; });
    };
    const auto own = std::ranges::find_if(found->second, holds);
    SyncGroupList result;
    for (const std::size_t member : own == found->second.end() ? found->second.front() : *own)
        result.append(groups_.element(member));
    return result;
}

} // namespace orvane::SyncClustering
