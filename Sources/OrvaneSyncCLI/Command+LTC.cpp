#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/SoundFile.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Ingest/LTCDecoder.h"

#include <algorithm>
#include <limits>

namespace orvane::cli {

namespace {

int channelIndex(const Context& context, const Arguments& arguments) {
    const long long channel =
        arguments.integer("--channel").value_or(context.settings->get(settings::ltcChannelIndex));
    if (channel < LTCDecoder::anyChannel || channel > std::numeric_limits<int>::max())
        throw UsageError("--channel counts from 0, or is -1 for any, and '" + std::to_string(channel) +
                         "' is no channel");
    return static_cast<int>(channel);
}

JSON json(const LTCDecoder::Frame& frame) {
    JSON json;
    json.set("tc", frame.tc);
    json.set("atSeconds", frame.atSeconds);
    json.set("beginsAtSeconds", frame.beginsAtSeconds);
    json.set("channel", frame.channelIndex);
    if (frame.start) {
        json.set("rate", timecodeRate::name(frame.start->rate));
        json.set("start", frame.start->timecode());
        json.set("startSeconds", frame.start->seconds());
    }
    return json;
}

std::string text(const LTCDecoder::Frame& frame) {
    std::string text = frame.tc + "\nbegins at " + formatted("%.6f", frame.beginsAtSeconds) +
                       " s of channel " + std::to_string(frame.channelIndex);
    if (frame.start)
        text += ", counts at " + std::string(timecodeRate::name(frame.start->rate)) +
                "; the file starts at " + frame.start->timecode();
    return text + "\n";
}

void ltc(Context& context, const Arguments& arguments) {
    if (arguments.positionals().size() != 1) throw UsageError("one file, please");
    const std::string& path = arguments.positionals().front();
    int channel = channelIndex(context, arguments);
    const auto file = openSound(path, SoundTracks::all);
    if (channel >= file->channelCount()) {
        channel = file->channelCount() - 1;
        context.warn("the file has " + counted(file->channelCount(), "channel", "channels") + "; channel " +
                     std::to_string(channel) + " is read, the last one");
    }

    const auto frame = LTCDecoder::decodeFirstFrame(*file, channel);
    if (!frame) checkRead(path, *file);
    if (arguments.has("--json")) {
        context.out << (frame ? json(*frame) : JSON()).dump(JSON::Layout::pretty) << "\n";
    } else if (frame) {
        context.out << text(*frame);
    } else {
        const std::string where =
            channel == LTCDecoder::anyChannel ? "any channel" : "channel " + std::to_string(channel);
        context.out << "No linear timecode in the first two seconds of " << where << ".\n";
    }
}

} // namespace

const Command& ltcCommand() {
    static const std::string channelHelp = "the channel that carries the signal, counted from 0 over all "
                                           "sound tracks, or -1 for the first that does "
                                           "(default: " +
                                           std::string(settings::ltcChannelIndex.key) + ")";
    static const Command command{
        "ltc",
        "FILE [--channel N] [options]",
        "Read a linear timecode from the first two seconds of a recording or of a camera's sound.",
        "orvanesync ltc demo/shoot/sound/DAY1_ROOMTONE.WAV --channel 5",
        {{"--channel", "N", channelHelp}},
        ltc};
    return command;
}

} // namespace orvane::cli
