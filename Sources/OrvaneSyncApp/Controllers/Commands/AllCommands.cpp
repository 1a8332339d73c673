#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"

#include <algorithm>
#include <iterator>

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

} // namespace orvane::commands
