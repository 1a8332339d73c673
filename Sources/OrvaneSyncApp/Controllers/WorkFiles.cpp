#include "OrvaneSyncApp/Controllers/WorkFiles.h"

#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Naming/ClipNames.h"

#include <string_view>
#include <unordered_set>
#include <utility>

namespace orvane {

NamingRules NamingRules::of(const platform::SettingsStore& store) {
    return {store.get(settings::clipNamingSource), store.get(settings::customNamingPattern),
            store.get(settings::namingSeparator)};
}

const std::vector<MediaAsset>* WorkFiles::scannedAudio() const {
    return scanned && !scanned->audioAssets.empty() ? &scanned->audioAssets : nullptr;
}

std::vector<const MediaAsset*> WorkFiles::audioPool() const {
    std::vector<const MediaAsset*> pool;
    if (const auto* all = scannedAudio()) {
        for (const MediaAsset& audio : *all) pool.push_back(&audio);
        return pool;
    }
    std::unordered_set<UUID> seen;
    for (const SyncGroup& group : groups)
        for (const AudioMatch& match : group.audioMatches)
            if (seen.insert(match.audio->id).second) pool.push_back(&*match.audio);
    for (const WildTrack& track : *wildTracks)
        if (seen.insert(track.id).second) pool.push_back(&track.audio);
    sortByPath(pool);
    return pool;
}

std::vector<MediaAsset> WorkFiles::copiedAudioPool() const {
    std::vector<MediaAsset> pool;
    for (const MediaAsset* audio : audioPool()) pool.push_back(*audio);
    return pool;
}

std::vector<MediaAsset> WorkFiles::videos() const {
    std::vector<MediaAsset> videos;
    videos.reserve(groups.size());
    for (const SyncGroup& group : groups) videos.push_back(group.video);
    return videos;
}

std::vector<const MediaAsset*> WorkFiles::removedVideos() const {
    std::vector<const MediaAsset*> removed;
    if (!scanned) return removed;
    std::unordered_set<std::string_view> left;
    for (const SyncGroup& group : groups) left.insert(group.video.url.path);
    for (const MediaAsset& video : scanned->videoAssets)
        if (!left.contains(video.url.path)) removed.push_back(&video);
    return removed;
}

FileNames WorkFiles::fileNames() const {
    FileNames names;
    for (const SyncGroup& group : groups) {
        names.add(group.video);
        for (const AudioMatch& match : group.audioMatches) names.add(match.audio);
    }
    for (const WildTrack& track : *wildTracks) names.add(track.audio);
    return names;
}

DisplayNames WorkFiles::displayNames(const NamingRules& rules) const {
    std::vector<std::string> texts =
        ClipNames::inDocument(groups, rules.source, rules.pattern, rules.separator);
    DisplayNames names;
    for (std::size_t i = 0; i < groups.size(); ++i)
        names[groups[i].id] = GroupNaming::appendingOffspeedTag(std::move(texts[i]), groups[i]);
    return names;
}

} // namespace orvane
