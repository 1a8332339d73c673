#include "OrvaneSyncCore/Services/Shortcuts/ShortcutSettings.h"

#include <algorithm>
#include <array>

namespace orvane::shortcutSettings {

namespace {

template <class T>
platform::Setting<T> described(platform::Setting<T> setting, std::string_view meaning) {
    setting.family = "Keyboard shortcuts";
    setting.meaning = meaning;
    return setting;
}

} // namespace

const platform::Setting<int> defaultsSchemaVersion =
    described(platform::Setting<int>("shortcuts.defaultsSchemaVersion", 0),
              "1 once the present default keys were adopted");
const platform::Setting<std::string> currentProfile =
    described(platform::Setting<std::string>("shortcuts.currentProfile"),
              "the profile of keys that was saved or loaded last");

const platform::SettingDescription* find(std::string_view key) {
    const std::array<const platform::SettingDescription*, 2> all{&defaultsSchemaVersion, &currentProfile};
    const auto* found = std::ranges::find(all, key, &platform::SettingDescription::key);
    return found == all.end() ? nullptr : *found;
}

} // namespace orvane::shortcutSettings
