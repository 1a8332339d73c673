#pragma once

#include "OrvaneSyncCore/Models/SettingsCatalogue.h"
#include "Platform/JSON.h"

#include <string>
#include <string_view>

namespace orvane::cli {

/// A typed value of a setting: JSON if it parses, else text; a setting of kind text takes it unchanged.
platform::JSON settingValue(const SettingDescription& setting, const std::string& typed);

/// The settings of an export that are changed most often, in groups, with their defaults and meanings, for a
/// help.
std::string exportSettingsHelp();

/// Throws UsageError for a key that names no setting; the message suggests the most similar one.
const SettingDescription& knownSetting(std::string_view key);

} // namespace orvane::cli
