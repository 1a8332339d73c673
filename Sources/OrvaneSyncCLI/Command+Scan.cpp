#include "OrvaneSyncApp/Controllers/Commands/WorkJSON.h"
#include "OrvaneSyncApp/Controllers/Commands/WorkWarnings.h"
#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/Printers.h"
#include "OrvaneSyncCLI/ReviewFile.h"
#include "OrvaneSyncCLI/ScanRun.h"
#include "OrvaneSyncCore/Models/Settings.h"

namespace orvane::cli {

namespace {

void scan(Context& context, const Arguments& arguments) {
    const ReviewFile review(arguments);
    ScanRun run(context, arguments);
    run.scan();
    const ImportController& controller = run.controller();
    const WorkSnapshot work(controller);
    if (review) review.write(reviewLines(work), controller);
    const std::vector<std::string> unheard = smartAudioWarnings(work);
    if (arguments.has("--json")) {
        std::vector<std::string> warnings = run.warnings();
        warnings.insert(warnings.end(), unheard.begin(), unheard.end());
        const auto mode = context.settings->find(settings::smartAudioMode);
        JSON state = stateJSON(work, mode.value_or(SmartAudioMode::off), warnings);
        state.setIfPresent("review", review.path());
        context.out << state.dump(JSON::Layout::pretty) << "\n";
    } else {
        context.out << stateText(controller, context.mayColour) << smartAudioText(controller)
                    << doubtsText(work, context.call()) << notComparedText(work.groups());
        if (review) context.out << review.text();
    }
    for (const std::string& warning : unheard) context.warn(warning);
}

} // namespace

const Command& scanCommand() {
    static const Command command{"scan",
                                 "FOLDER... [options]",
                                 "Scan and match, show the result; write the clips for review if asked.",
                                 "orvanesync scan demo/shoot",
                                 ReviewFile::withOptions(scanOptions()),
                                 scan};
    return command;
}

} // namespace orvane::cli
