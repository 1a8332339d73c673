#include "OrvaneSyncCore/Services/Atmo/SceneKey.h"

#include "Platform/Text.h"

namespace orvane {

namespace {

std::string valueIn(const std::optional<std::map<std::string, std::string>>& metadata, const char* key) {
    if (!metadata) return {};
    const auto found = metadata->find(key);
    return found == metadata->end() ? "" : found->second;
}

std::string sceneOf(const SyncGroup& group) {
    if (auto scene = valueIn(group.lockitMetadata, "scene"); !scene.empty()) return scene;
    if (auto scene = valueIn(group.aleMetadata, "Scene"); !scene.empty()) return scene;
    const MediaAsset* audio = group.primaryAudio();
    return audio != nullptr && audio->ixmlData ? audio->ixmlData->scene.value_or("") : "";
}

} // namespace

std::string sceneKey(const SyncGroup& group) {
    const std::string scene = sceneOf(group);
    std::string key;
    for (const std::string_view character : platform::text::characters(scene)) {
        if (!platform::text::isLetter(character) && !platform::text::isNumber(character)) break;
        key += character;
    }
    return key.empty() ? "Unscened" : key;
}

} // namespace orvane
