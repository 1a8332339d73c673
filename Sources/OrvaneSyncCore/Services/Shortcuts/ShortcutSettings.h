#pragma once

#include "Platform/Setting.h"

#include <string>
#include <string_view>

/// Settings that the program stores about the key bindings. Presets do not contain them.
namespace orvane::shortcutSettings {

extern const platform::Setting<int> defaultsSchemaVersion;
extern const platform::Setting<std::string> currentProfile;

/// Null for an unknown key.
const platform::SettingDescription* find(std::string_view key);

} // namespace orvane::shortcutSettings
