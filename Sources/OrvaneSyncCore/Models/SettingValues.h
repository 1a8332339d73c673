#pragma once

#include "OrvaneSyncCore/Models/SettingsCatalogue.h"
#include "Platform/JSON.h"
#include "Platform/SettingsStore.h"

#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// The value that is used if none is stored; null for the mode of Smart Audio, which differs between
/// commands.
platform::JSON defaultInUse(const SettingDescription& setting);

/// A value in the form in which it is typed: a text without quotes, a whole number without a point, anything
/// else as JSON; empty for null.
std::string settingText(const platform::JSON& value);

/// Why the setting does not accept the value; absent if it does.
std::optional<std::string> whyUseless(const SettingDescription& setting, const platform::JSON& value);

/// Describes each stored value that its setting does not accept, unless an option of this run replaces it:
/// the key, the value, and the value that is used instead.
std::vector<std::string> uselessStoredValues(const platform::SettingsStore& store);

} // namespace orvane
