#include "OrvaneSyncCore/Services/Naming/ResultsList.h"

#include <cstddef>
#include <unordered_map>

namespace orvane {

SyncGroupList filtered(const SyncGroupList& groups, FilterMode mode) {
    if (mode == FilterMode::all) return groups;
    return groups.filtered([mode](const SyncGroup& group) {
        return group.matchStatus.isSettled() == (mode == FilterMode::matched);
    });
}

std::string sharedAudioBundleID(const SyncGroup& group) {
    if (group.isExcludedFromMulticam()) return "excluded:" + group.id.text();
    if (const MediaAsset* audio = group.primaryAudio()) return audio->url.path;
    return "mos:" + group.id.text();
}

std::vector<SharedAudioBundle> sharedAudioBundles(const SyncGroupList& groups) {
    std::vector<SharedAudioBundle> bundles;
    std::unordered_map<std::string, std::size_t> places;
    for (std::size_t i = 0; i < groups.size(); ++i) {
        std::string key = sharedAudioBundleID(groups[i]);
        const auto [place, isNew] = places.try_emplace(key, bundles.size());
        if (isNew) bundles.push_back({std::move(key), {}});
        bundles[place->second].cams.append(groups.element(i));
    }
    return bundles;
}

} // namespace orvane
