#include "OrvaneSyncApp/Controllers/Commands/WorkJSON.h"
#include "OrvaneSyncApp/Controllers/Commands/WorkWarnings.h"
#include "OrvaneSyncApp/Controllers/WorkInputs.h"
#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/Printers.h"
#include "OrvaneSyncCLI/ScanRun.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "Platform/Text.h"

namespace orvane::cli {

namespace {

void scan(Context& context, const Arguments& arguments) {
    const auto review = arguments.value("--review");
    const OutputPermission permission{.replacesOthers = arguments.has("--force")};
    if (review && (review->empty() || *review == "-")) throw UsageError("--review needs the name of a file");
    if (review) OutputGuard(OutputKind::table, inputsOf(arguments), permission).check(*review);
    ScanRun run(context, arguments);
    run.scan();
    const ImportController& controller = run.controller();
    const WorkSnapshot work(controller);
    if (review) {
        RunInputs inputs = inputsOf(arguments);
        inputs.add(inputsOf(controller)());
        writeReviewFile(*review, reviewLines(work), std::move(inputs), permission);
    }
    const std::vector<std::string> unheard = smartAudioWarnings(work);
    if (arguments.has("--json")) {
        std::vector<std::string> warnings = run.warnings();
        warnings.insert(warnings.end(), unheard.begin(), unheard.end());
        const auto mode = context.settings->find(settings::smartAudioMode);
        JSON state = stateJSON(work, mode.value_or(SmartAudioMode::off), warnings);
        state.setIfPresent("review", review);
        context.out << state.dump(JSON::Layout::pretty) << "\n";
    } else {
        context.out << stateText(controller, context.mayColour) << smartAudioText(controller)
                    << doubtsText(work, context.call());
        if (!arguments.has("--quiet")) context.out << notComparedText(work.groups());
        if (review)
            context.out << "Wrote " << platform::text::printable(*review)
                        << ": decide there, then take it back with sync --apply.\n";
    }
    for (const std::string& warning : unheard) context.warn(warning);
}

std::vector<Option> options() {
    std::vector<Option> options = scanOptions();
    options.push_back(
        {"--review", "OUT.tsv", "write a table of the clips, to decide about them in a spreadsheet"});
    options.push_back(
        {"--force", "", "replace a file that is no such table; never media, never what is read"});
    return options;
}

} // namespace

const Command& scanCommand() {
    static const Command command{"scan",
                                 "FOLDER... [options]",
                                 "Scan and match, show the result; write the clips for review if asked.",
                                 "orvanesync scan demo/shoot",
                                 options(),
                                 scan};
    return command;
}

} // namespace orvane::cli
