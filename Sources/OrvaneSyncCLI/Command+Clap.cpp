#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/SoundFile.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Services/Waveform/ClapDetector.h"
#include "Platform/JSON.h"

namespace orvane::cli {

namespace {

using platform::JSON;

void clap(Context& context, const Arguments& arguments) {
    if (arguments.positionals().size() != 1) throw UsageError("one file, please");
    const std::string& path = arguments.positionals().front();
    const auto file = openSound(path);
    const auto found = ClapDetector::detectClapPoint(*file);
    checkRead(path, *file);
    if (arguments.has("--json")) {
        JSON json;
        if (found) json.set("clapPointSeconds", *found);
        context.out << json.dump(JSON::Layout::pretty) << "\n";
    } else if (found) {
        context.out << formatted("Clap at %.2f s\n", *found);
    } else {
        context.out
            << "No clap in the first and the last 30 seconds: nothing there is more than five times as "
               "loud as the quiet part.\n";
    }
}

} // namespace

const Command& clapCommand() {
    static const Command command{"clap",
                                 "FILE [options]",
                                 "Find the clap of a clapper board in a recording.",
                                 "orvanesync clap demo/shoot/sound/DAY1_T01.WAV",
                                 {},
                                 clap};
    return command;
}

} // namespace orvane::cli
