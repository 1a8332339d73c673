#pragma once

#include "Platform/FileSettingsStore.h"
#include "Platform/SettingsStore.h"

#include <memory>
#include <string>

namespace orvane {

/// The path of the user's settings file.
std::string standardSettingsPath();

/// Opens the user's settings, with the registered defaults; a program calls it at its start. Also makes the
/// application's folders accessible to their owner alone. Creates no file; never throws for a bad one
/// (`problem` of the store says what is wrong).
std::unique_ptr<platform::FileSettingsStore> openStandardSettings();

} // namespace orvane
