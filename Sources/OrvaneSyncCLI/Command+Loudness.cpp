#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/ScanRun.h"
#include "OrvaneSyncCore/Services/SmartAudio/LUFSMeter.h"
#include "Platform/AudioFile.h"
#include "Platform/Files.h"
#include "Platform/JSON.h"

#include <array>
#include <cstdio>

namespace orvane::cli {

namespace {

void loudness(Context& context, const Arguments& arguments) {
    if (arguments.positionals().size() != 1) throw UsageError("one file, please");
    const std::string& path = arguments.positionals().front();
    if (const std::string why = whyUnreadable(path, false); !why.empty())
        throw CommandError("can't read '" + path + "': " + why);
    if (platform::AudioFile::open(path) == nullptr)
        throw CommandError("can't read '" + path + "': it holds no sound that can be decoded");

    const auto measured = LUFSMeter::measureIntegratedLUFS({platform::files::standardized(path)});
    if (arguments.has("--json")) {
        JSON json;
        json.set("integratedLUFS", measured ? JSON(*measured) : JSON());
        context.out << json.dump(JSON::Layout::pretty) << "\n";
        return;
    }
    if (!measured) {
        context.out << "No loudness: silence, or less than 0.4 s of sound.\n";
        return;
    }
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%.1f LUFS\n", *measured);
    context.out << text.data();
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
