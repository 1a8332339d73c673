#include "OrvaneSyncCLI/Printers.h"

#include "OrvaneSyncCLI/Table.h"
#include "Platform/Text.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace orvane::cli {

namespace {

std::string formatted(const char* format, double value) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), format, value);
    return text.data();
}

/// Seconds with milliseconds, as sync is judged by eye and ear.
std::string secondsText(double seconds) { return formatted("%.3f s", seconds); }

std::string startText(const MediaAsset& asset) { return asset.startTimecodeString.value_or("-"); }

std::string lengthText(const MediaAsset& asset) {
    return asset.durationSeconds ? clockText(*asset.durationSeconds) : "-";
}

std::string channelsText(const MediaAsset& audio) {
    return audio.channelCount ? " (" + std::to_string(*audio.channelCount) + " ch)" : "";
}

std::string soundText(const SyncGroup& group) {
    const MediaAsset* audio = group.primaryAudio();
    if (audio == nullptr) return "-";
    std::string text = audio->filename + channelsText(*audio);
    if (group.audioMatches.size() > 1)
        text += " + " + std::to_string(group.audioMatches.size() - 1) + " more";
    return text;
}

/// Where the sound begins, seen from the first frame of the picture.
std::string beginsText(const SyncGroup& group) {
    if (group.audioMatches.empty()) return "-";
    const double offset = group.audioMatches.front().syncOffsetSeconds + group.manualAudioOffsetSeconds;
    constexpr double atOnce = 0.0005;
    if (std::abs(offset) < atOnce) return "with picture";
    return secondsText(std::abs(offset)) + (offset > 0 ? " after" : " before");
}

std::string matchText(const SyncGroup& group) {
    std::string text = group.matchStatus.label();
    if (group.matchStatus.kind == MatchStatus::Kind::unmatched) {
        if (!group.video.startTimecodeString)
            text += ": no timecode";
        else if (!group.video.durationSeconds)
            text += ": no length";
        else
            text += ": no sound at that time";
    }
    if (group.video.isOffspeed()) text += ", off-speed";
    return text;
}

std::string clipsText(const ImportController& controller, bool bold) {
    Table table({{"CLIP"},
                 {"CAMERA FILE"},
                 {"STARTS"},
                 {"LENGTH", Table::Align::right},
                 {"MATCH"},
                 {"SOUND"},
                 {"SOUND BEGINS", Table::Align::right}});
    const auto names = controller.displayNames();
    for (const SyncGroup& group : controller.syncGroups())
        table.add({names.at(group.id), group.video.filename, startText(group.video), lengthText(group.video),
                   matchText(group), soundText(group), beginsText(group)});
    return table.empty() ? "" : table.text(bold) + "\n";
}

std::string wildTracksText(const ImportController& controller, bool bold) {
    Table table({{"SOUND WITHOUT PICTURE"}, {"STARTS"}, {"LENGTH", Table::Align::right}, {"WHY"}});
    for (const WildTrack& track : controller.wildTracks()) {
        const MediaAsset& audio = track.audio;
        const char* why = audio.isAtmo()                                           ? "room tone or wild track"
                          : !audio.durationSeconds                                 ? "can't be read"
                          : !audio.startTimecodeString && !audio.bextTimeReference ? "no timecode"
                                                                                   : "no clip at that time";
        table.add({audio.filename + channelsText(audio), startText(audio), lengthText(audio), why});
    }
    return table.empty() ? "" : table.text(bold) + "\n";
}

void addFact(Table& table, std::string name, const std::optional<std::string>& value) {
    if (value && !value->empty()) table.add({std::move(name), *value});
}

void addRecorderFacts(Table& table, const MediaAsset& asset) {
    if (asset.bextTimeReference)
        addFact(table, "time reference", std::to_string(*asset.bextTimeReference) + " samples");
    addFact(table, "recorder", asset.bextOriginator);
    if (!asset.ixmlData) return;
    const IXMLData& ixml = *asset.ixmlData;
    addFact(table, "scene", ixml.scene);
    addFact(table, "take", ixml.take);
    addFact(table, "tape", ixml.tape);
    addFact(table, "project", ixml.project);
    addFact(table, "note", ixml.note);
    addFact(table, "timecode rate", ixml.timecodeRate);
    if (ixml.isCircled()) table.add({"circled", "yes"});
    for (const IXMLTrack& track : ixml.tracks)
        table.add({"track " + std::to_string(track.channelIndex), track.name});
}

} // namespace

std::string stateText(const ImportController& controller, bool bold) {
    const auto& scan = controller.scanResult();
    if (!scan || scan->totalFiles() == 0) return "No video or audio files found.\n";
    std::string text = clipsText(controller, bold) + wildTracksText(controller, bold);
    text += counted(static_cast<long long>(controller.syncGroups().size()), "clip", "clips") + ": " +
            std::to_string(controller.syncClipCount()) + " with sound, " +
            std::to_string(controller.mosCount()) + " MOS, " + std::to_string(controller.unmatchedCount()) +
            " not matched; " +
            counted(static_cast<long long>(controller.wildTracks().size()), "recording", "recordings") +
            " without picture. " + counted(static_cast<long long>(scan->totalFiles()), "file", "files") +
            " in " + formatted("%.2f s", scan->scanDuration) + ".\n";
    return text;
}

std::string assetText(const MediaAsset& asset, bool bold) {
    Table table({{asset.filename}, {""}});
    addFact(table, "starts", asset.startTimecodeString);
    if (asset.durationSeconds)
        addFact(table, "length", secondsText(*asset.durationSeconds) + " (" + lengthText(asset) + ")");
    if (asset.width && asset.height)
        addFact(table, "picture", std::to_string(*asset.width) + "x" + std::to_string(*asset.height));
    addFact(table, "codec", asset.videoCodecFourCC);
    if (asset.frameRate) addFact(table, "frame rate", formatted("%.6g fps", *asset.frameRate));
    if (asset.projectFrameRate)
        addFact(table, "timecode or project rate", formatted("%.6g fps", *asset.projectFrameRate));
    if (asset.isOffspeed() && asset.sensorFrameRate)
        addFact(table, "off-speed", "sensor at " + formatted("%.6g fps", *asset.sensorFrameRate));
    if (asset.channelCount) addFact(table, "channels", std::to_string(*asset.channelCount));
    if (asset.sampleRate) addFact(table, "sample rate", formatted("%.6g Hz", *asset.sampleRate));
    if (asset.contentCreatedDate) addFact(table, "created", iso8601(*asset.contentCreatedDate));
    addRecorderFacts(table, asset);
    if (table.empty()) table.add({"nothing could be read", ""});
    return table.text(bold);
}

} // namespace orvane::cli
