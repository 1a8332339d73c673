#pragma once

#include "OrvaneSyncCore/Models/SettingsCatalogue.h"
#include "Platform/JSON.h"

#include <string>
#include <string_view>

namespace orvane::cli {

/// What somebody typed as a setting's value: JSON where it parses, else text; a setting that is a text takes
/// it as it stands.
platform::JSON settingValue(const SettingDescription& setting, const std::string& typed);

/// The settings of an export that people change most, in groups, with their defaults and meanings, for a
/// help.
std::string exportSettingsHelp();

/// Throws UsageError for a key that names no setting; it says which one was probably meant.
const SettingDescription& knownSetting(std::string_view key);

} // namespace orvane::cli
