#include "OrvaneSyncApp/Controllers/Commands/WorkJSON.h"
#include "OrvaneSyncApp/Controllers/Commands/WorkWarnings.h"
#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/Printers.h"
#include "OrvaneSyncCLI/ScanRun.h"
#include "OrvaneSyncCore/Models/Settings.h"

namespace orvane::cli {

namespace {

void scan(Context& context, const Arguments& arguments) {
    ScanRun run(context, arguments);
    run.scan();
    const ImportController& controller = run.controller();
    const std::vector<std::string> unheard = smartAudioWarnings(controller);
    if (arguments.has("--json")) {
        std::vector<std::string> warnings = run.warnings();
        warnings.insert(warnings.end(), unheard.begin(), unheard.end());
        const auto mode = context.settings->find(settings::smartAudioMode);
        context.out
            << stateJSON(controller, mode.value_or(SmartAudioMode::off), warnings).dump(JSON::Layout::pretty)
            << "\n";
    } else {
        context.out << stateText(controller, context.mayColour) << smartAudioText(controller);
    }
    for (const std::string& warning : unheard) context.warn(warning);
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
