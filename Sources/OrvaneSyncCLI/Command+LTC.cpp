#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/SoundFile.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Services/Ingest/LTCDecoder.h"

#include <algorithm>
#include <limits>

namespace orvane::cli {

namespace {

int channelIndex(const Context& context, const Arguments& arguments) {
    const long long channel =
        arguments.integer("--channel").value_or(context.settings->integer("ltc.channelIndex", 0));
    if (channel < 0 || channel > std::numeric_limits<int>::max())
        throw UsageError("--channel counts from 0, and '" + std::to_string(channel) + "' is no channel");
    return static_cast<int>(channel);
}

void ltc(Context& context, const Arguments& arguments) {
    if (arguments.positionals().size() != 1) throw UsageError("one file, please");
    const std::string& path = arguments.positionals().front();
    int channel = channelIndex(context, arguments);
    const auto file = openSound(path);
    if (channel >= file->channelCount()) {
        channel = file->channelCount() - 1;
        context.warn("the file has " + counted(file->channelCount(), "channel", "channels") + "; channel " +
                     std::to_string(channel) + " is read, the last one");
    }

    const auto frame = LTCDecoder::decodeFirstFrame(*file, channel);
    if (arguments.has("--json")) {
        JSON json;
        if (frame) {
            json.set("tc", frame->tc);
            json.set("atSeconds", frame->atSeconds);
        }
        context.out << json.dump(JSON::Layout::pretty) << "\n";
    } else if (frame) {
        context.out << frame->tc << "\n";
    } else {
        context.out << "No linear timecode in the first two seconds of channel " << channel << ".\n";
    }
}

} // namespace

const Command& ltcCommand() {
    static const Command command{
        "ltc",
        "FILE [--channel N] [options]",
        "Read a linear timecode from the first two seconds of a recording.",
        "orvanesync ltc demo/shoot/sound/DAY1_ROOMTONE.WAV --channel 5",
        {{"--channel", "N",
          "the channel that carries the signal, counted from 0 (default: ltc.channelIndex)"}},
        ltc};
    return command;
}

} // namespace orvane::cli
