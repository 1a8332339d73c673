#include "OrvaneSyncCLI/ChannelStrip.h"
#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/ScanRun.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Services/Ingest/MediaProbeService.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioRouter.h"
#include "Platform/Files.h"
#include "Platform/JSON.h"

#include <algorithm>
#include <limits>
#include <set>
#include <string>

namespace orvane::cli {

namespace {

SmartAudioMode mode(const Arguments& arguments) {
    const auto named = arguments.value("--mode");
    if (!named) return SmartAudioMode::standard;
    if (const auto found = smartAudioModeFromUITag(*named)) return *found;
    throw UsageError("--mode takes off, standard, studio, cinematic or custom, not '" + *named + "'");
}

int channelCount(const Arguments& arguments, const MediaAsset& asset) {
    const auto asked = arguments.integer("--channels");
    if (asked && (*asked < 1 || *asked > std::numeric_limits<int>::max()))
        throw UsageError("--channels takes a number from 1 on");
    return asked ? static_cast<int>(*asked) : asset.channelCount.value_or(0);
}

/// "1,3" as tracks 1 and 3.
std::set<int> candidates(const Arguments& arguments) {
    std::set<int> tracks;
    std::string rest = arguments.value("--candidates").value_or("");
    while (!rest.empty()) {
        const std::size_t comma = std::min(rest.find(','), rest.size());
        const auto track = integerFrom(rest.substr(0, comma));
        if (!track || *track < 1 || *track > std::numeric_limits<int>::max())
            throw UsageError("--candidates takes tracks such as 1,3");
        tracks.insert(static_cast<int>(*track));
        rest.erase(0, comma + 1);
    }
    return tracks;
}

std::string nameOf(const MediaAsset& asset, int track) {
    if (asset.ixmlData)
        for (const IXMLTrack& named : asset.ixmlData->tracks)
            if (named.channelIndex == track) return named.name;
    return "-";
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

std::string channelsText(const SmartAudioResult& result, const MediaAsset& asset, bool bold) {
    Table table({{"", Table::Align::right},
                 {"NAME"},
                 {"ROLE"},
                 {"SPEECH", Table::Align::right},
                 {"LEVEL", Table::Align::right},
                 {"SNR", Table::Align::right},
                 {"RECOMMENDED"},
                 {"WHY"}});
    for (std::size_t i = 0; i < result.tracks.size(); ++i) {
        const TrackAdjustment& track = result.tracks[i];
        const auto* role =
            i < result.channelClassifications.size() ? &result.channelClassifications[i] : nullptr;
        const bool isBest = result.bestTrackIndex == track.trackIndex;
        table.add({(isBest ? "* " : "") + std::to_string(track.trackIndex), nameOf(asset, track.trackIndex),
                   role != nullptr ? std::string(rawValue(role->kind)) : "-",
                   formatted("%.0f %%", 100.0 * track.speechRatio),
                   formatted("%.1f dBFS", track.averageLevelDB), formatted("%.1f dB", track.estimatedSNR),
                   recommendation(track), role != nullptr ? role->source : ""});
    }
    return table.text(bold);
}

std::vector<std::string> stripNames(const SmartAudioResult& result, const MediaAsset& asset) {
    std::vector<std::string> names;
    for (const TrackAdjustment& track : result.tracks)
        names.push_back(std::to_string(track.trackIndex) + " " + nameOf(asset, track.trackIndex));
    return names;
}

void analyze(Context& context, const Arguments& arguments) {
    if (arguments.positionals().size() != 1) throw UsageError("one file, please");
    const std::string& path = arguments.positionals().front();
    SmartAudioRequest request;
    request.mode = mode(arguments);
    request.candidateTracks = candidates(arguments);
    if (const std::string why = whyUnreadable(path, false); !why.empty())
        throw CommandError("can't read '" + path + "': " + why);
    request.audioURL = {platform::files::standardized(path)};
    const MediaAsset asset =
        MediaProbeService(*context.settings, nullptr).probe(request.audioURL, AssetKind::audio);
    request.channelCount = channelCount(arguments, asset);
    if (asset.ixmlData) request.ixmlTracks = asset.ixmlData->tracks;
    if (request.mode == SmartAudioMode::custom)
        request.config = SmartAudioConfig::fromUserDefaults(*context.settings);
    if (!arguments.has("--no-blocks"))
        request.blockSettings = SmartAudioBlockSettings::fromUserDefaults(*context.settings);

    const SmartAudioResult result = SmartAudioRouter().analyze(request);
    if (arguments.has("--json")) {
        context.out << toJSON(result).dump(JSON::Layout::pretty) << "\n";
        return;
    }
    if (result.tracks.empty())
        throw CommandError("can't read '" + path + "': it holds no sound that can be decoded");
    context.out << channelsText(result, asset, context.mayColour);
    if (result.bestTrackIndex) context.out << "* the best channel of the whole take\n";
    if (result.detectedCharacter)
        context.out << "\n" << displayName(*result.detectedCharacter) << ", who is heard when:\n";
    context.out << channelStrip(result.blocks, stripNames(result, asset), context.outWidth);
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
         {"--no-blocks", "", "measure only; tell no roles and route nothing"}},
        analyze};
    return command;
}

} // namespace orvane::cli
