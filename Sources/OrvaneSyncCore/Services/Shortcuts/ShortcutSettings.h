#pragma once

#include "Platform/Setting.h"

#include <string>
#include <string_view>

/// What the program notes in the settings store about the key bindings. Presets do not hold these.
namespace orvane::shortcutSettings {

extern const platform::Setting<int> defaultsSchemaVersion;
extern const platform::Setting<std::string> currentProfile;

/// Null for a key that is none of them.
const platform::SettingDescription* find(std::string_view key);

} // namespace orvane::shortcutSettings
