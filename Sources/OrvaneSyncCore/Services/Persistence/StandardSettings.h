#pragma once

#include "Platform/SettingsStore.h"

#include <memory>
#include <string>

namespace orvane {

/// Where the settings of the user account lie.
std::string standardSettingsPath();

/// Opens the settings of the user account, with the registered defaults, as a program does first: also leaves
/// the application's folders to their owner alone. Makes no file; never throws for a bad one (`problem` of
/// the store says what is wrong).
std::unique_ptr<platform::FileSettingsStore> openStandardSettings();

} // namespace orvane
