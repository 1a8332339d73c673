#include "OrvaneSyncCLI/SettingValues.h"

#include "OrvaneSyncCLI/Arguments.h"
#include "OrvaneSyncCore/Models/SmartAudioKinds.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace orvane::cli {

namespace {

using Kind = SettingDescription::Kind;

constexpr std::string_view smartAudioModeKey = "smartAudioMode";

std::string kindText(Kind kind) { return (kind == Kind::integer ? "an " : "a ") + std::string(name(kind)); }

/// A value that reads the same against two defaults is one that the store understands.
bool isUnderstood(const SettingDescription& setting, const platform::JSON& value) {
    platform::MemorySettingsStore store;
    const auto key = setting.key;
    store.setOverride(key, value);
    switch (setting.kind) {
    case Kind::boolean:
        return store.boolean(key, false) == store.boolean(key, true);
    case Kind::integer:
        return store.integer(key, 0) == store.integer(key, 1);
    case Kind::number:
        return store.number(key, 0) == store.number(key, 1);
    case Kind::text:
        return store.textIfPresent(key).has_value();
    case Kind::map:
        return value.isObject();
    }
    return false;
}

/// Of an effect of Final Cut Pro, where beyond 0 to 1 there is nothing.
bool isAmount(std::string_view key) {
    return key == "smartAudio.voiceIso" || key == "smartAudio.loudness" ||
           key == "smartAudio.loudnessUniformity";
}

struct SettingGroup {
    std::string_view title;
    std::array<std::string_view, 7> keys; ///< fewer leave the last ones empty
};

constexpr std::array<SettingGroup, 6> mostChanged{{
    {"names", {"eventName", "clipNamingSource", "customNamingPattern", "namingSeparator", "notes.source"}},
    {"events and clips",
     {"export.splitEventsByScene", "export.eventNamePattern", "export.generateRawMediaEvent",
      "export.wrapMOSInSyncClip", "generateSyncClips"}},
    {"picture",
     {"project.targetFrameRate", "trimMode", "videoResolution", "container.aspectRatio", "spatialConform"}},
    {"multicam", {"generateMulticam", "multicam.codec"}},
    {"off-speed material",
     {"offspeed.generateNativeMOS", "offspeed.suffix", "offspeed.separateEvent",
      "offspeed.generateProjectRate", "offspeed.projectRateSuffix", "offspeed.projectRateSeparateEvent",
      "offspeed.autoKeyword"}},
    {"sound",
     {"smartAudioMode", "smartAudio.blockMode", "smartAudio.loudness", "globalAudioOffset.frames",
      "audioBaseRole", "export.volumeKeyframes"}},
}};

} // namespace

platform::JSON defaultInUse(const SettingDescription& setting) {
    return setting.key == smartAudioModeKey ? platform::JSON() : setting.defaultValue();
}

std::string settingText(const platform::JSON& value) {
    if (const std::string* text = value.string()) return *text;
    if (const auto whole = value.integer()) return std::to_string(*whole);
    return value.isNull() ? "" : value.dump();
}

platform::JSON settingValue(const SettingDescription& setting, const std::string& typed) {
    try {
        platform::JSON value = platform::JSON::parse(typed);
        return setting.kind == Kind::text && value.string() == nullptr ? platform::JSON(typed) : value;
    } catch (const platform::JSONError&) {
        return typed;
    }
}

std::optional<std::string> whyUseless(const SettingDescription& setting, const platform::JSON& value) {
    const std::string takes = "the setting '" + std::string(setting.key) + "' takes ";
    if (!isUnderstood(setting, value))
        return takes + kindText(setting.kind) + ", not '" + settingText(value) + "'";
    if (isAmount(setting.key)) {
        const double amount = value.number().value_or(0);
        if (amount >= 0 && amount <= 1) return std::nullopt;
        return takes + "a number from 0 to 1, not '" + settingText(value) + "'";
    }
    const auto words = SettingsCatalogue::choices(setting.key);
    if (words.empty() || std::ranges::find(words, settingText(value)) != words.end()) return std::nullopt;
    // Who reads this one is not particular about case and blanks.
    if (setting.key == smartAudioModeKey && smartAudioModeFromUITag(settingText(value))) return std::nullopt;
    std::string list;
    for (const std::string_view word : words) list.append(list.empty() ? "" : ", ").append(word);
    return takes + "one of " + list + "; not '" + settingText(value) + "'";
}

std::string exportSettingsHelp() {
    std::string help = "settings (--set KEY=VALUE; with their defaults; 'orvanesync settings' lists all):\n";
    for (const SettingGroup& group : mostChanged) {
        help.append("  ").append(group.title).append("\n");
        for (const std::string_view key : group.keys) {
            if (key.empty()) break;
            const SettingDescription* setting = SettingsCatalogue::find(key);
            std::string line = "    " + std::string(key) + "=" + settingText(defaultInUse(*setting));
            line.resize(std::max<std::size_t>(line.size() + 2, 48), ' ');
            help.append(line).append(SettingsCatalogue::meaning(key)).append("\n");
        }
    }
    return help;
}

const SettingDescription& knownSetting(std::string_view key) {
    if (const SettingDescription* setting = SettingsCatalogue::find(key)) return *setting;
    std::vector<std::string_view> keys;
    for (const auto& setting : SettingsCatalogue::all()) keys.push_back(setting.key);
    std::string message = "no setting is called '" + platform::text::printable(key) + "'";
    if (const auto meant = nearest(key, keys)) message += " (did you mean '" + std::string(*meant) + "'?)";
    throw UsageError(message + "; 'orvanesync settings' lists them");
}

} // namespace orvane::cli
