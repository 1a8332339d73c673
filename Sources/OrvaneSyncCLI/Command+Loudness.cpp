#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/Printers.h"
#include "OrvaneSyncCLI/ProgressLine.h"
#include "OrvaneSyncCLI/SoundFile.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Services/SmartAudio/LUFSMeter.h"
#include "Platform/JSON.h"

namespace orvane::cli {

namespace {

constexpr double lowestSampleRate = 10; // Hz; below it nothing is analysed

void loudness(Context& context, const Arguments& arguments) {
    if (arguments.positionals().size() != 1) throw UsageError("one file, please");
    const std::string& path = arguments.positionals().front();
    const auto file = openSound(path);
    ProgressLine progress(context, arguments.has("--quiet"));
    const auto [measured, heardFrames] = LUFSMeter::measureFile(*file, hearing(progress, secondsOf(*file)));
    progress.clear();
    const double heard = secondsOf(*file, heardFrames), promised = promisedSecondsOf(*file);
    checkRead(path, *file);
    if (file->sampleRate() >= lowestSampleRate) checkHeard(context, path, *file, heardFrames);
    if (arguments.has("--json")) {
        JSON json;
        json.set("integratedLUFS", measured ? JSON(*measured) : JSON());
        json.set("heardSeconds", heard);
        if (promised > 0) json.set("promisedSeconds", promised);
        context.out << json.dump(JSON::Layout::pretty) << "\n";
        return;
    }
    if (!measured) {
        context.out << "No loudness: silence, less than 0.4 s that can be decoded, or a sample rate below "
                       "10 Hz.\n";
        return;
    }
    context.out << formatted("%.1f LUFS\n", *measured);
}

} // namespace

const Command& loudnessCommand() {
    static const Command command{"loudness",
                                 "FILE [options]",
                                 "Measure the integrated loudness of a recording.",
                                 "orvanesync loudness demo/shoot/sound/DAY1_T01.WAV",
                                 {},
                                 loudness};
    return command;
}

} // namespace orvane::cli
