#include "OrvaneSyncCore/Services/Naming/GroupNaming.h"

#include "OrvaneSyncCore/Utilities/RateText.h"
#include "Platform/Text.h"

#include <algorithm>

namespace orvane::GroupNaming {

namespace {

/// The scene's words, joined by the separator instead of the recorder's separators.
std::string joinedWords(std::string_view scene, std::string_view separator) {
    std::string joined;
    while (!scene.empty()) {
        const std::size_t end = std::min(scene.find_first_of("-_. "), scene.size());
        if (end > 0) {
            if (!joined.empty()) joined += separator;
            joined += scene.substr(0, end);
        }
        scene.remove_prefix(std::min(end + 1, scene.size()));
    }
    return joined;
}

std::string customName(const SyncGroup& group, const std::optional<std::string>& customPattern,
                       std::string_view separator) {
    constexpr int onlyCounter = 1;
    if (customPattern && !customPattern->empty()) return resolve(*customPattern, group, onlyCounter);
    return resolve("{scene}" + std::string(separator) + "{take}", group, onlyCounter);
}

} // namespace

Source sourceFrom(std::string_view text) { return fromRawValue<Source>(text).value_or(Source::sceneTake); }

std::optional<std::string> sceneTakeName(const SyncGroup& group, std::string_view separator) {
    const MediaAsset* audio = group.primaryAudio();
    if (audio == nullptr || !audio->ixmlData || !audio->ixmlData->scene) return std::nullopt;
    const auto& ixml = *audio->ixmlData;
    std::string name = joinedWords(platform::text::trimmed(*ixml.scene), separator);
    if (name.empty()) return std::nullopt;
    const std::string take = stripTakePaddingIfNumeric(platform::text::trimmed(ixml.take.value_or("")));
    if (!take.empty()) name.append(separator).append(take);
    return name;
}

std::string baseName(const SyncGroup& group, Source source, const std::optional<std::string>& customPattern,
                     std::string_view separator) {
    std::optional<std::string> name;
    switch (source) {
    case Source::video:
        break;
    case Source::audio:
        if (const MediaAsset* audio = group.primaryAudio()) name = audio->filenameStem();
        break;
    case Source::sceneTake:
        name = sceneTakeName(group, separator);
        break;
    case Source::custom:
        name = customName(group, customPattern, separator);
        if (name->empty()) name.reset();
        break;
    }
    return name ? *std::move(name) : group.video.filenameStem();
}

std::optional<std::string> manualName(const SyncGroup& group) {
    if (!group.manualClipName) return std::nullopt;
    const std::string_view name = platform::text::trimmed(*group.manualClipName);
    if (name.empty()) return std::nullopt;
    return std::string(name);
}

std::string prefillClipNameFieldValue(const SyncGroup& group, Source source,
                                      const std::optional<std::string>& customPattern,
                                      std::string_view separator) {
    return manualName(group) ? *group.manualClipName : baseName(group, source, customPattern, separator);
}

std::string fcpClipName(const SyncGroup& group, Source source,
                        const std::optional<std::string>& customPattern, int siblingCount,
                        std::string_view separator, bool includeOffspeedTag, std::string_view cameraFolder) {
    auto manual = manualName(group);
    std::string name = manual ? *std::move(manual) : baseName(group, source, customPattern, separator);
    if (siblingCount >= 2)
        if (const auto letter = cameraLetter(group.video)) name += " Cam " + *letter;
    if (!cameraFolder.empty()) name.append(" ").append(cameraFolder);
    if (group.isPickup) name += " PU";
    return includeOffspeedTag ? appendingOffspeedTag(std::move(name), group) : name;
}

std::optional<std::string> offspeedTag(const SyncGroup& group) {
    if (!group.video.isOffspeed()) return std::nullopt;
    return rateText(*group.video.sensorFrameRate) + "fps";
}

std::string appendingOffspeedTag(std::string name, const SyncGroup& group) {
    if (const auto tag = offspeedTag(group)) name += " " + *tag;
    return name;
}

std::optional<std::string> cameraLetter(const MediaAsset& asset) {
    constexpr std::string_view shape = "A000C000"; // letter, reel, "C", clip
    const std::string_view name = asset.filename;
    if (name.size() < shape.size()) return std::nullopt;
    for (std::size_t i = 0; i < shape.size(); ++i) {
        const char c = name[i];
        const bool fits = shape[i] == 'A'   ? c >= 'A' && c <= 'Z'
                          : shape[i] == '0' ? c >= '0' && c <= '9'
                                            : c == shape[i];
        if (!fits) return std::nullopt;
    }
    return std::string(name.substr(0, 1));
}

} // namespace orvane::GroupNaming
