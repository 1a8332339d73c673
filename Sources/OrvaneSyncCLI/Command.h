#pragma once

#include "OrvaneSyncCLI/Context.h"

#include <span>
#include <string_view>
#include <vector>

namespace orvane::cli {

enum ExitStatus : int { done = 0, failed = 1, wrongUsage = 2 };

/// One command of the program.
struct Command {
    std::string_view name;
    std::string_view usage; ///< after the command's name, such as "FILE..."
    std::string_view summary;
    std::string_view example; ///< works as printed
    std::vector<Option> options;
    void (*run)(Context& context, const Arguments& arguments);
    std::string_view details = {};  ///< more lines for the help, above the options
    std::string_view settings = {}; ///< lines about its settings, below the options
};

const Command& syncCommand();
const Command& scanCommand();
const Command& diagnoseCommand();
const Command& probeCommand();
const Command& analyzeCommand();
const Command& loudnessCommand();
const Command& ltcCommand();
const Command& clapCommand();
const Command& frameCommand();
const Command& playCommand();
const Command& slateCommand();
const Command& onsetsCommand();
const Command& waveformCommand();
const Command& mixdownCommand();
const Command& soloCommand();
const Command& previewCommand();
const Command& atmoCommand();
const Command& calibrateCommand();
const Command& modelsCommand();
const Command& cachesCommand();
const Command& reportCommand();
const Command& timecodeCommand();
const Command& sessionCommand();
const Command& projectCommand();
const Command& settingsCommand();
const Command& shortcutsCommand();
const Command& lockitCommand();
const Command& serveCommand();
const Command& doctorCommand();

/// All commands, in the order in which the help lists them.
std::span<const Command* const> allCommands();
/// Parses the words after the command's name. Throws UsageError.
Arguments argumentsOf(const Command& command, std::span<const std::string> words);

#ifdef ORVANE_DEMO
const Command& serviceDemoCommand();
#endif
/// The command that the desktop runs with the address at the end of a sign-in; not in any list.
int handOverCallback(std::span<const std::string> words, Context& context);

/// Runs a whole command line (without the program's name) and returns its exit status.
int run(std::span<const std::string> words, Context& context);

} // namespace orvane::cli
