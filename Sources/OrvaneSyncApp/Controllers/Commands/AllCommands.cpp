#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>

namespace orvane::commands {

const std::vector<Command>& allCommands() {
    static const std::vector<Command> all = [] {
        std::vector<Command> commands;
        for (auto* topic :
             {&workCommands, &editCommands, &reviewCommands, &timelineCommands, &slateCommands,
              &playerCommands, &clusterCommands, &smartAudioCommands, &renderedAudioCommands, &atmoCommands,
              &calibrationCommands, &reportCommands, &fileCommands, &sessionCommands, &settingCommands,
              &shortcutCommands, &lockitCommands, &modelCommands})
            std::ranges::move((*topic)(), std::back_inserter(commands));
        return commands;
    }();
    return all;
}

const Command& command(std::string_view id) {
    const auto& table = allCommands();
    const auto found = std::ranges::find(table, id, &Command::id);
    if (found == table.end()) throw std::logic_error("no command " + std::string(id));
    return *found;
}

const Command* commandOf(ShortcutAction action) {
    const auto found = std::ranges::find(allCommands(), std::optional(action), &Command::action);
    return found == allCommands().end() ? nullptr : &*found;
}

} // namespace orvane::commands
