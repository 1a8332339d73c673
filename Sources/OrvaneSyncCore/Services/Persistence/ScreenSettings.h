#pragma once

#include "Platform/Setting.h"

#include <string_view>

/// What the program notes in the settings store about the screens of this machine. Presets do not hold it.
namespace orvane::screenSettings {

/// The place in the list of screens that the fullscreen player opens on, from 0.
extern const platform::Setting<int> preferredScreen;

/// Null for a key that is none of them.
const platform::SettingDescription* find(std::string_view key);

} // namespace orvane::screenSettings
