#include "OrvaneSyncCLI/TypedSettings.h"

#include "OrvaneSyncCLI/Arguments.h"
#include "OrvaneSyncCore/Models/SettingValues.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace orvane::cli {

namespace {

using Kind = SettingDescription::Kind;

struct SettingGroup {
    std::string_view title;
    std::array<const SettingDescription*, 7> settings; ///< fewer leave the last ones empty
};

constexpr std::array<SettingGroup, 6> mostChanged{{
    {"names",
     {&settings::eventName, &settings::clipNamingSource, &settings::customNamingPattern,
      &settings::namingSeparator, &settings::notesSource}},
    {"events and clips",
     {&settings::splitEventsByScene, &settings::eventNamePattern, &settings::generateRawMediaEvent,
      &settings::wrapMOSInSyncClip, &settings::generateSyncClips}},
    {"picture",
     {&settings::targetFrameRate, &settings::trimMode, &settings::videoResolution, &settings::aspectRatio,
      &settings::spatialConform}},
    {"multicam", {&settings::generateMulticam, &settings::multicamCodec}},
    {"off-speed material",
     {&settings::generateNativeMOS, &settings::nativeMOSSuffix, &settings::nativeMOSSeparateEvent,
      &settings::generateProjectRate, &settings::projectRateSuffix, &settings::projectRateSeparateEvent,
      &settings::offspeedAutoKeyword}},
    {"sound",
     {&settings::smartAudioMode, &settings::smartAudioBlockMode, &settings::smartAudioLoudness,
      &settings::globalAudioOffsetFrames, &settings::audioBaseRole, &settings::volumeKeyframes}},
}};

} // namespace

platform::JSON settingValue(const SettingDescription& setting, const std::string& typed) {
    try {
        platform::JSON value = platform::JSON::parse(typed);
        return setting.kind == Kind::text && value.string() == nullptr ? platform::JSON(typed) : value;
    } catch (const platform::JSONError&) {
        return typed;
    }
}

std::string exportSettingsHelp() {
    std::string help = "settings (--set KEY=VALUE; with their defaults; 'orvanesync settings' lists all):\n";
    for (const SettingGroup& group : mostChanged) {
        help.append("  ").append(group.title).append("\n");
        for (const SettingDescription* setting : group.settings) {
            if (setting == nullptr) break;
            std::string line = "    " + std::string(setting->key) + "=" + settingText(defaultInUse(*setting));
            line.resize(std::max<std::size_t>(line.size() + 2, 48), ' ');
            help.append(line).append(setting->meaning).append("\n");
        }
    }
    return help;
}

const SettingDescription& knownSetting(std::string_view key) {
    if (const SettingDescription* setting = SettingsCatalogue::find(key)) return *setting;
    std::vector<std::string_view> keys;
    for (const SettingDescription& setting : SettingsCatalogue::all()) keys.push_back(setting.key);
    std::string message = "no setting is called '" + platform::text::printable(key) + "'";
    if (const auto meant = nearest(key, keys)) message += " (did you mean '" + std::string(*meant) + "'?)";
    throw UsageError(message + "; 'orvanesync settings' lists them");
}

} // namespace orvane::cli
