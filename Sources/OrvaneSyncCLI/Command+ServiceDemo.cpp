#ifdef ORVANE_DEMO

#include "OrvaneSyncCLI/Command.h"
#include "Platform/Modules.h"

#include <cerrno>
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

namespace orvane::cli {

namespace {

/// A separate program, so that this one contains no server.
void serviceDemo(Context&, const Arguments& arguments) {
    if (arguments.positionals().size() > 1) throw UsageError("service-demo takes one folder");
    std::vector<std::string> words{"orvane_service_demo"};
    for (const std::string& word : arguments.positionals()) words.push_back(word);
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    for (const std::string& folder : platform::modules::programFolders())
        ::execv((folder + "/orvane_service_demo").c_str(), pointers.data());
    throw CommandError("the server of the demo can't be started: " + std::string(std::strerror(errno)));
}

} // namespace

const Command& serviceDemoCommand() {
    static const Command command{
        "service-demo",
        "[FOLDER]",
        "Run a small LockitNetwork on this machine, with the demo's production.",
        "orvanesync service-demo demo/service",
        {},
        serviceDemo,
        "\nWrites FOLDER/Orvane Tandrel/service.json (FOLDER: demo/service), and serves until Ctrl-C. With\n"
        "XDG_CONFIG_HOME=FOLDER every command uses it.\n"};
    return command;
}

} // namespace orvane::cli

#endif
