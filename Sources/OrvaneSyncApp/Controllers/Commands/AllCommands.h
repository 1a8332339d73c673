#pragma once

#include "OrvaneSyncApp/Controllers/Commands/Command.h"

#include <string_view>
#include <vector>

namespace orvane::commands {

/// The commands of each topic, a row each, and all of them.
std::vector<Command> workCommands();
std::vector<Command> editCommands();
std::vector<Command> smartAudioCommands();
std::vector<Command> renderedAudioCommands();
std::vector<Command> atmoCommands();
std::vector<Command> calibrationCommands();
std::vector<Command> reviewCommands();
std::vector<Command> timelineCommands();
std::vector<Command> playerCommands();
std::vector<Command> clusterCommands();
std::vector<Command> slateCommands();
std::vector<Command> reportCommands();
std::vector<Command> fileCommands();
std::vector<Command> sessionCommands();
std::vector<Command> settingCommands();
std::vector<Command> shortcutCommands();
std::vector<Command> lockitCommands();
std::vector<Command> modelCommands();
const std::vector<Command>& allCommands();
/// Throws std::logic_error for one that is not there.
const Command& command(std::string_view id);
/// The row that does what this key can do; null where none does.
const Command* commandOf(ShortcutAction action);

} // namespace orvane::commands
