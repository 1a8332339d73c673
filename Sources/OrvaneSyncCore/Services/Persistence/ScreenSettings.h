#pragma once

#include "Platform/Setting.h"

#include <string_view>

/// Settings about the screens of this machine. Presets do not contain them.
namespace orvane::screenSettings {

/// The index, from 0, in the list of screens of the one on which the fullscreen player opens.
extern const platform::Setting<int> preferredScreen;

/// Null for an unknown key.
const platform::SettingDescription* find(std::string_view key);

} // namespace orvane::screenSettings
