#include "OrvaneSyncCore/Services/Naming/SidebarOutline.h"

#include "OrvaneSyncCore/Services/Naming/ClipNames.h"
#include "OrvaneSyncCore/Services/Naming/SyncClustering.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <utility>

namespace orvane::SidebarOutline {

namespace {

/// The clips with one key: the cameras of a take, from one shoot.
struct Bundle {
    std::string key;
    std::string label; ///< base name
    std::vector<SyncGroupList::Element> groups;
};

/// In the order in which the keys first occur.
std::vector<Bundle> bundles(const SyncGroupList& groups, GroupNaming::Source source,
                            const std::optional<std::string>& customPattern) {
    std::vector<Bundle> result;
    std::unordered_map<std::string, std::size_t> places;
    const SyncClustering::Index takes(groups, source, customPattern);
    for (std::size_t i = 0; i < groups.size(); ++i) {
        const SyncGroup& group = groups[i];
        std::string label = takes.key(i);
        std::string key = group.isExcludedFromMulticam() ? "__excluded__" + group.id.text() : label;
        if (const std::size_t shoot = takes.shoot(i); shoot > 0) key += "__" + std::to_string(shoot + 1);
        const auto [place, isNew] = places.try_emplace(key, result.size());
        if (isNew) result.push_back({std::move(key), std::move(label), {}});
        result[place->second].groups.push_back(groups.element(i));
    }
    return result;
}

SidebarNode leaf(SyncGroupList::Element group, std::string label) {
    std::string id = group->id.text();
    return {std::move(id), std::move(label), std::move(group), {}, false};
}

} // namespace

std::vector<SidebarNode> build(const SyncGroupList& groups, GroupNaming::Source source,
                               const std::optional<std::string>& customPattern) {
    std::vector<SidebarNode> nodes;
    for (Bundle& bundle : bundles(groups, source, customPattern)) {
        if (bundle.groups.size() == 1) {
            nodes.push_back(leaf(bundle.groups.front(), std::move(bundle.label)));
            continue;
        }
        std::ranges::stable_sort(bundle.groups, {}, [](const SyncGroupList::Element& group) {
            return GroupNaming::cameraLetter(group->video).value_or("Z");
        });
        SidebarNode parent{bundle.key + "__multicam", bundle.label, nullptr, {}, true};
        SyncGroupList cameras;
        for (auto& group : bundle.groups) cameras.append(std::move(group));
        const std::vector<std::string> names =
            ClipNames::of(cameras, source, customPattern, GroupNaming::defaultSeparator);
        for (std::size_t i = 0; i < cameras.size(); ++i)
            parent.children.push_back(
                leaf(cameras.element(i), GroupNaming::appendingOffspeedTag(names[i], cameras[i])));
        nodes.push_back(std::move(parent));
    }
    return nodes;
}

} // namespace orvane::SidebarOutline
