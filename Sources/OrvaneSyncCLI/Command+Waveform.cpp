#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/Printers.h"
#include "OrvaneSyncCLI/ProgressLine.h"
#include "OrvaneSyncCLI/SoundFile.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Services/Persistence/OutputGuard.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformImage.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformReduction.h"
#include "Platform/JSON.h"
#include "Platform/Text.h"

#include <algorithm>
#include <optional>
#include <thread>
#include <utility>

namespace orvane::cli {

namespace {

/// The recording that the command line names, reduced.
WaveformResult reduced(Context& context, const Arguments& arguments, std::size_t bins) {
    const std::string& path = arguments.positionals().front();
    const auto file = openSound(path);
    ProgressLine progress(context, arguments.has("--quiet"));
    HeardWaveform heard = heardWaveform(*file, bins, std::max(std::thread::hardware_concurrency(), 1U),
                                        hearing(progress, secondsOf(*file)));
    progress.clear();
    checkHeard(context, path, *file, heard.heardFrames);
    return std::move(heard.waveform);
}

void onsets(Context& context, const Arguments& arguments) {
    if (arguments.positionals().size() != 1) throw UsageError("one file, please");
    const WaveformResult waveform = reduced(context, arguments, WaveformReduction::reviewBins);
    const std::vector<double> found = onsetMarkersOf(waveform);
    if (arguments.has("--json")) {
        JSON json;
        json.set("binsPerSecond", waveform.binsPerSecond);
        json.set("onsets", JSON::Array(found.begin(), found.end()));
        context.out << json.dump(JSON::Layout::pretty) << "\n";
        return;
    }
    if (found.empty()) context.out << "Nothing in it starts to sound.\n";
    for (const double onset : found) context.out << formatted("%.3f s\n", onset);
}

std::size_t binsOf(const Arguments& arguments) {
    const long long bins =
        arguments.integer("--bins").value_or(static_cast<long long>(WaveformReduction::reviewBins));
    if (bins < 1 || bins > static_cast<long long>(WaveformReduction::mostBins))
        throw UsageError("--bins must be 1 to " + std::to_string(WaveformReduction::mostBins));
    return static_cast<std::size_t>(bins);
}

void waveform(Context& context, const Arguments& arguments) {
    if (arguments.positionals().size() != 1) throw UsageError("one file, please");
    const std::size_t bins = binsOf(arguments);
    const auto picture = arguments.value("--png");
    if (picture && (picture->empty() || *picture == "-")) throw UsageError("--png needs the name of a file");
    RunInputs inputs;
    inputs.addFile(arguments.positionals().front(), "the recording");
    const OutputGuard guard(OutputKind::picture, inputs, {.replacesOthers = arguments.has("--force")});
    if (picture) guard.check(*picture);

    const WaveformResult result = reduced(context, arguments, bins);
    const std::vector<double> onsets = onsetMarkersOf(result);
    if (picture) {
        if (result.peaks.empty()) throw CommandError("no picture: the recording has no sample rate");
        guard.write(*picture, pngOf(drawnWaveform(result.peaks, result.rms, displayGain(result), bins)));
    }
    if (arguments.has("--json")) {
        context.out << toJSON(result, onsets).dump(JSON::Layout::pretty) << "\n";
        return;
    }
    const float peak = result.peaks.empty() ? 0 : *std::ranges::max_element(result.peaks);
    context.out << counted(result.peaks.size(), "bin", "bins")
                << formatted(", %.2f a second", result.binsPerSecond)
                << formatted("; the highest peak is %.3f; ", static_cast<double>(peak))
                << counted(onsets.size(), "onset", "onsets") << "\n";
    if (picture) context.out << "Wrote " << platform::text::printable(*picture) << "\n";
}

} // namespace

const Command& onsetsCommand() {
    static const Command command{"onsets",
                                 "FILE [options]",
                                 "List where sound starts in a recording.",
                                 "orvanesync onsets demo/shoot/sound/DAY1_T01.WAV",
                                 {},
                                 onsets};
    return command;
}

const Command& waveformCommand() {
    static const std::string binsHelp =
        "reduce it to at least that many (default: " + std::to_string(WaveformReduction::reviewBins) + ")";
    static const Command command{
        "waveform",
        "FILE [--bins N] [--png OUT] [options]",
        "Reduce a recording to peaks and levels, and draw it if asked.",
        "orvanesync waveform demo/shoot/sound/DAY1_T01.WAV --bins 800 --png /tmp/DAY1_T01.png",
        {{"--bins", "N", binsHelp},
         {"--png", "OUT.png", "draw it, as many pixels wide as it has bins at least"},
         {"--force", "", "replace a file that is no picture of OrvaneSync; never media, never what is read"}},
        waveform};
    return command;
}

} // namespace orvane::cli
