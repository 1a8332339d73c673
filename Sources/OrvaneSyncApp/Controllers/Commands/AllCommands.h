#pragma once

#include "OrvaneSyncApp/Controllers/Commands/Command.h"

#include <string_view>
#include <vector>

namespace orvane::commands {

/// The commands of each topic, one row each, and the list of all.
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
/// Throws std::logic_error for an unknown identifier.
const Command& command(std::string_view id);
/// The command that does the action of this key; null if none does.
const Command* commandOf(ShortcutAction action);

} // namespace orvane::commands
