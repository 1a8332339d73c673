#pragma once

#include "OrvaneSyncCore/Models/SettingsCatalogue.h"
#include "Platform/JSON.h"

#include <optional>
#include <string>
#include <string_view>

namespace orvane::cli {

/// What somebody typed as a setting's value: JSON where it parses, else text; a setting that is a text takes
/// it as it stands.
platform::JSON settingValue(const SettingDescription& setting, const std::string& typed);

/// What holds where nothing was stored; null for the mode of Smart Audio, where commands differ.
platform::JSON defaultInUse(const SettingDescription& setting);

/// A value as it is typed: a text bare, a whole number without a point, anything else as JSON; empty for
/// none.
std::string settingText(const platform::JSON& value);

/// Why no reader of the setting would understand the value; absent when it is one that they take.
std::optional<std::string> whyUseless(const SettingDescription& setting, const platform::JSON& value);

/// The settings of an export that people change most, in groups, with their defaults and meanings, for a
/// help.
std::string exportSettingsHelp();

/// Throws UsageError for a key that names no setting; it says which one was probably meant.
const SettingDescription& knownSetting(std::string_view key);

} // namespace orvane::cli
