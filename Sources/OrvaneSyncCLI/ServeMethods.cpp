#include "OrvaneSyncCLI/ServeMethods.h"

#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"

#include <algorithm>

namespace orvane::cli {

std::string serveMethodsText(std::string_view command) {
    std::string text;
    for (const commands::Command& method : commands::allCommands())
        if (command == "serve" ||
            std::ranges::find(method.counterparts, command) != method.counterparts.end())
            text.append("  ").append(method.signature()).append("\n      ").append(method.help).append("\n");
    return text;
}

} // namespace orvane::cli
