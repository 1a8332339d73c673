#include "OrvaneSyncApp/Controllers/Commands/WorkWarnings.h"
#include "OrvaneSyncCLI/ChannelStrip.h"
#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/FileAnalysis.h"
#include "OrvaneSyncCLI/Printers.h"
#include "OrvaneSyncCLI/ProgressLine.h"
#include "OrvaneSyncCLI/SoundFile.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Services/SmartAudio/ChannelReadingDiagnostic.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioRouter.h"
#include "Platform/Files.h"
#include "Platform/JSON.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <set>
#include <string>

namespace orvane::cli {

namespace {

SmartAudioMode mode(const Arguments& arguments) {
    const auto named = arguments.value("--mode");
    if (!named) return SmartAudioMode::standard;
    if (const auto found = smartAudioModeFromUITag(*named)) return *found;
    throw UsageError("--mode must be off, standard, studio, cinematic or custom, not '" + *named + "'");
}

std::optional<int> channelCount(const Arguments& arguments) {
    const auto asked = arguments.integer("--channels");
    if (!asked) return std::nullopt;
    if (*asked < 1 || *asked > SmartAudioRouter::mostTracks)
        throw UsageError("--channels takes a number from 1 to " +
                         std::to_string(SmartAudioRouter::mostTracks));
    return static_cast<int>(*asked);
}

void checkChannels(std::optional<int> asked, const std::string& path, int channels) {
    if (asked.value_or(0) > channels)
        throw UsageError("--channels: '" + path + "' has " + counted(channels, "channel", "channels") +
                         ", not " + std::to_string(*asked));
}

/// Parses "1,3" as tracks 1 and 3.
std::set<int> candidates(const Arguments& arguments) {
    const auto list = arguments.value("--candidates");
    std::set<int> tracks;
    for (std::size_t from = 0; list && from <= list->size();) {
        const std::size_t comma = std::min(list->find(',', from), list->size());
        const auto track = integerFrom(list->substr(from, comma - from));
        if (!track || *track < 1 || *track > SmartAudioRouter::mostTracks)
            throw UsageError("--candidates takes tracks such as 1,3");
        tracks.insert(static_cast<int>(*track));
        from = comma + 1;
    }
    return tracks;
}

void checkCandidates(const Context& context, const SmartAudioRequest& request) {
    const auto& tracks = request.candidateTracks;
    const auto missing =
        std::ranges::find_if(tracks, [&](int track) { return track > request.channelCount; });
    if (missing == tracks.end()) return;
    const std::string what = "--candidates: there is no channel " + std::to_string(*missing) + " among the " +
                             counted(request.channelCount, "channel", "channels") + " that are heard";
    if (missing == tracks.begin()) throw UsageError(what);
    context.warn(what);
}

/// The recorder's names of the channels. Of several names for one the last counts, as for their roles.
using Names = std::map<int, std::string>;

Names namesOf(const MediaAsset& asset) {
    Names names;
    if (asset.ixmlData)
        for (const IXMLTrack& track : asset.ixmlData->tracks)
            if (!platform::text::trimmed(track.name).empty()) names[track.channelIndex] = track.name;
    return names;
}

std::string nameOf(const Names& names, int track) {
    const auto found = names.find(track);
    return found == names.end() ? "-" : found->second;
}

/// In silence all channels are equally good, so none is best.
std::optional<int> bestTrack(const SmartAudioResult& result) {
    const bool anyScores = std::ranges::any_of(
        result.tracks, [](const TrackAdjustment& track) { return track.bestSourceScore > 0; });
    return anyScores ? result.bestTrackIndex : std::nullopt;
}

/// Without a minus sign before a value that rounds to zero.
std::string tenths(const char* format, double value) {
    return formatted(format, std::round(value * 10) / 10 + 0.0);
}

std::string recommendation(const TrackAdjustment& track) {
    std::string text;
    const auto add = [&](const std::string& piece) { text += (text.empty() ? "" : ", ") + piece; };
    constexpr double percent = 100;
    if (track.voiceIsolationAmount)
        add("Voice Isolation " + formatted("%.0f %%", percent * *track.voiceIsolationAmount));
    if (track.loudnessAmount) add("Loudness " + formatted("%.0f %%", percent * *track.loudnessAmount));
    if (track.humReductionFrequency) add("Hum " + std::to_string(*track.humReductionFrequency) + " Hz");
    if (track.volumeGainDB) add("Gain " + formatted("%+.1f dB", *track.volumeGainDB));
    return text.empty() ? "-" : text;
}

std::string channelsText(const SmartAudioResult& result, const Names& names, bool bold) {
    Table table({{"", Table::Align::right},
                 {"NAME"},
                 {"ROLE"},
                 {"SPEECH", Table::Align::right},
                 {"LEVEL", Table::Align::right},
                 {"SNR", Table::Align::right},
                 {"RECOMMENDED"},
                 {"WHY"}});
    const std::optional<int> best = bestTrack(result);
    for (std::size_t i = 0; i < result.tracks.size(); ++i) {
        const TrackAdjustment& track = result.tracks[i];
        const auto* role =
            i < result.channelClassifications.size() ? &result.channelClassifications[i] : nullptr;
        const bool isBest = best == track.trackIndex;
        table.add({(isBest ? "* " : "") + std::to_string(track.trackIndex), nameOf(names, track.trackIndex),
                   role != nullptr ? std::string(rawValue(role->kind)) : "-",
                   formatted("%.0f %%", 100.0 * track.speechRatio), tenths("%.1f dBFS", track.averageLevelDB),
                   tenths("%.1f dB", track.estimatedSNR), recommendation(track),
                   role != nullptr ? role->source : ""});
    }
    return table.text(bold);
}

std::string takeText(const SmartAudioResult& result, const Names& names, int columns) {
    if (result.blocks.empty())
        return "Nothing to route: less than 0.25 s that can be decoded, or a sample rate below 4 Hz.\n";
    std::vector<std::string> labels;
    labels.reserve(result.tracks.size());
    for (const TrackAdjustment& track : result.tracks)
        labels.push_back(std::to_string(track.trackIndex) + " " + nameOf(names, track.trackIndex));
    const std::string character(result.detectedCharacter ? displayName(*result.detectedCharacter) : "Take");
    return character + ", which is heard when:\n" + channelStrip(result.blocks, labels, columns);
}

/// Compares two readings of one channel, for developers.
void compareReadings(Context& context, const Arguments& arguments, const std::string& path) {
    for (const char* other : {"--mode", "--channels", "--candidates", "--no-blocks"})
        if (arguments.has(other)) throw UsageError("--diagnose can't be used with " + std::string(other));
    const long long channel = *arguments.integer("--diagnose");
    const int channels = openSound(path)->channelCount();
    if (channel < 1 || channel > channels)
        throw UsageError("--diagnose: there is no channel " + std::to_string(channel) + " among " +
                         std::to_string(channels));
    const std::string report =
        diagnoseChannelReading({platform::files::standardized(path)}, static_cast<int>(channel));
    if (!arguments.has("--json")) {
        context.out << report;
        return;
    }
    JSON json;
    json.set("report", report);
    context.out << json.dump(JSON::Layout::pretty) << "\n";
}

void analyze(Context& context, const Arguments& arguments) {
    if (arguments.positionals().size() != 1) throw UsageError("one file, please");
    const std::string& path = arguments.positionals().front();
    if (arguments.has("--diagnose")) return compareReadings(context, arguments, path);
    const SmartAudioMode asked = mode(arguments);
    const auto askedChannels = channelCount(arguments);
    const std::set<int> askedCandidates = candidates(arguments);
    const auto file = openSound(path);
    checkChannels(askedChannels, path, file->channelCount());
    auto [request, asset] = fileAnalysis(context, path, *file, asked, askedChannels);
    request.candidateTracks = askedCandidates;
    checkCandidates(context, request);
    if (arguments.has("--no-blocks")) request.blockSettings.reset();

    ProgressLine progress(context, arguments.has("--quiet"));
    request.progress = hearing(progress, std::min(secondsOf(*file), SmartAudioRouter::mostSeconds));
    const SmartAudioResult result = SmartAudioRouter().analyze(request);
    progress.clear();
    if (SmartAudioRouter::endsEarly(result))
        context.warn(earlyEndWarning("'" + path + "'", result.heardSeconds, result.promisedSeconds));
    if (arguments.has("--json")) {
        context.out << toJSON(result).dump(JSON::Layout::pretty) << "\n";
        return;
    }
    const Names names = namesOf(asset);
    const bool isWhole = secondsOf(*file) < SmartAudioRouter::mostSeconds + smartAudioWindowSeconds;
    const std::string heard = SmartAudioRouter::endsEarly(result)
                                  ? clockText(result.heardSeconds) + " that is there"
                              : isWhole ? "whole take"
                                        : "first " + clockText(SmartAudioRouter::mostSeconds);
    context.out << channelsText(result, names, context.mayColour);
    if (bestTrack(result)) context.out << "* the best channel of the " << heard << "\n";
    if (!isWhole)
        context.out << "Only the " << heard << " of " << clockText(secondsOf(*file)) << " was heard.\n";
    if (request.blockSettings) context.out << "\n" << takeText(result, names, context.outWidth);
}

} // namespace

const Command& analyzeCommand() {
    static const Command command{
        "analyze",
        "FILE [options]",
        "Tell the microphones of a recording apart, and which is heard when.",
        "orvanesync analyze demo/shoot/sound/DAY1_T01.WAV",
        {{"--mode", "MODE", "off, standard (default), studio, cinematic or custom"},
         {"--channels", "N", "how many channels to look at (default: those of the file)"},
         {"--candidates", "1,3", "the channels that may be heard (default: all)"},
         {"--no-blocks", "", "measure only; name no roles and route nothing"},
         {"--diagnose", "N", "for developers: read channel N in two ways and show where they differ"}},
        analyze};
    return command;
}

} // namespace orvane::cli
