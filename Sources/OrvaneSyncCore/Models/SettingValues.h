#pragma once

#include "OrvaneSyncCore/Models/SettingsCatalogue.h"
#include "Platform/JSON.h"
#include "Platform/SettingsStore.h"

#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// What holds where nothing was stored; null for the mode of Smart Audio, where commands differ.
platform::JSON defaultInUse(const SettingDescription& setting);

/// A value as it is typed: a text bare, a whole number without a point, anything else as JSON; empty for
/// none.
std::string settingText(const platform::JSON& value);

/// Why no reader of the setting would understand the value; absent when it is one that they take.
std::optional<std::string> whyUseless(const SettingDescription& setting, const platform::JSON& value);

/// For each stored value that no reader understands and that nothing of this run stands above: its key, the
/// value, and what is used in its place.
std::vector<std::string> uselessStoredValues(const platform::SettingsStore& store);

} // namespace orvane
