#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/Printers.h"
#include "OrvaneSyncCLI/ScanRun.h"

namespace orvane::cli {

namespace {

void scan(Context& context, const Arguments& arguments) {
    ScanRun run(context, arguments);
    run.scan();
    if (arguments.has("--json"))
        context.out << stateJSON(run.controller()).dump(JSON::Layout::pretty) << "\n";
    else
        context.out << stateText(run.controller(), context.mayColour) << smartAudioText(run.controller());
    for (const std::string& warning : smartAudioWarnings(run.controller())) context.warn(warning);
}

} // namespace

const Command& scanCommand() {
    static const Command command{"scan",
                                 "FOLDER [AUDIO_FOLDER] [options]",
                                 "Scan and match, show the result, write nothing.",
                                 "orvanesync scan demo/shoot",
                                 scanOptions(),
                                 scan};
    return command;
}

} // namespace orvane::cli
