#include "OrvaneSyncCLI/Printers.h"

#include "OrvaneSyncApp/Controllers/Commands/WorkJSON.h"
#include "OrvaneSyncApp/Controllers/Commands/WorkWarnings.h"
#include "OrvaneSyncApp/ViewModels/Results/ClipTexts.h"

#include "OrvaneSyncCLI/CureCommand.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Services/Naming/ResultsList.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cmath>

namespace orvane::cli {

namespace {

std::string timecodeRateText(TimecodeFrameRate rate) {
    return formatted("%.6g fps", timecodeRate::frameRateForRealTimeCalculation(rate)) +
           (timecodeRate::isDrop(rate) ? ", drop frame" : ", non-drop");
}

/// Cameras of one recording are listed together.
std::string clipsText(const ImportController& controller, bool bold) {
    Table table({{"CLIP"},
                 {"CAMERA FILE"},
                 {"STARTS"},
                 {"LENGTH", Table::Align::right},
                 {"MATCH"},
                 {"SOUND"},
                 {"SOUND BEGINS", Table::Align::right}});
    const auto names = controller.work().displayNames();
    const FileNames& files = controller.work().fileNames();
    for (const auto& bundle :
         sharedAudioBundles(filtered(controller.work().syncGroups(), FilterMode::matched)))
        for (const SyncGroup& group : bundle.cams) {
            const Take take = takeOf(group, assumedChannels);
            table.add({names.at(group.id), files.of(group.video), startText(group.video),
                       lengthText(group.video), matchText(group, take), soundText(group, take, files),
                       beginsText(group, take)});
        }
    return table.empty() ? "" : table.text(bold) + "\n";
}

std::string wildTracksText(const ImportController& controller, bool bold) {
    std::vector<const MediaAsset*> recordings;
    for (const WildTrack& track : controller.work().wildTracks()) recordings.push_back(&track.audio);
    sortByPath(recordings);
    std::ranges::stable_sort(recordings, [](const MediaAsset* a, const MediaAsset* b) {
        if (a->startTimecodeString != b->startTimecodeString)
            return a->startTimecodeString < b->startTimecodeString;
        return platform::text::compareLocalizedStandard(a->filename, b->filename) < 0;
    });
    const FileNames& files = controller.work().fileNames();
    Table table({{"SOUND WITHOUT PICTURE"}, {"STARTS"}, {"LENGTH", Table::Align::right}, {"WHY"}});
    UnmatchedReasons reasons = WorkSnapshot(controller).unmatchedReasons();
    for (const MediaAsset* audio : recordings)
        table.add({files.of(*audio) + channelsText(*audio), startText(*audio), lengthText(*audio),
                   reasons.ofRecording(*audio)});
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

std::string issuesText(const ImportController& controller, bool bold) {
    Table table({{"NOT MATCHED"}, {"STARTS"}, {"LENGTH", Table::Align::right}, {"WHY"}});
    UnmatchedReasons reasons = WorkSnapshot(controller).unmatchedReasons();
    const FileNames& files = controller.work().fileNames();
    for (const SyncGroup& group : filtered(controller.work().syncGroups(), FilterMode::issues)) {
        table.add(
            {files.of(group.video), startText(group.video), lengthText(group.video), reasons.ofClip(group)});
        for (const AudioMatch& match : group.audioMatches)
            table.add({"  " + files.of(match.audio) + channelsText(match.audio), startText(match.audio),
                       lengthText(match.audio), "overlaps " + secondsText(match.overlapDurationSeconds)});
    }
    return table.empty() ? "" : table.text(bold) + "\n";
}

std::string stateText(const ImportController& controller, bool bold) {
    const auto& scan = controller.scan().scanResult();
    if (controller.work().syncGroups().empty() && (!scan || scan->totalFiles() == 0))
        return scan ? "No video or audio files found.\n" : "No clips.\n";
    std::string text =
        clipsText(controller, bold) + issuesText(controller, bold) + wildTracksText(controller, bold);
    text += counted(controller.work().syncGroups().size(), "clip", "clips") + ": " +
            std::to_string(controller.work().syncClipCount()) + " with sound, " +
            std::to_string(controller.work().mosCount()) + " MOS, " +
            std::to_string(controller.work().unmatchedCount()) + " not matched";
    if (!scan) return text + ".\n";
    text += "; " + counted(controller.work().wildTracks().size(), "recording", "recordings") +
            " without picture. " + counted(scan->totalFiles(), "file", "files") + " in " +
            (scan->scanDuration < 1 ? formatted("%.0f ms", scan->scanDuration * 1000)
                                    : formatted("%.1f s", scan->scanDuration)) +
            ".\n";
    if (const auto proxies = scan->proxies.size(); proxies > 0)
        text += counted(proxies, "proxy", "proxies") + " left out.\n";
    if (const auto copies = scan->copies.size(); copies > 0)
        text += counted(copies, "copy of a camera file", "copies of camera files") + " left out.\n";
    if (controller.reports().aleMatchStatus())
        text += platform::text::printable(*controller.reports().aleMatchStatus()) + ".\n";
    return text;
}

std::string assetText(const MediaAsset& asset, bool bold) {
    Table table({{asset.filename}, {""}});
    addFact(table, "starts", asset.startTimecodeString);
    addFact(table, "start stated in", asset.timecodeSideFile);
    if (asset.durationSeconds)
        addFact(table, "length", secondsText(*asset.durationSeconds) + " (" + lengthText(asset) + ")");
    if (asset.width && asset.height)
        addFact(table, "picture", std::to_string(*asset.width) + "x" + std::to_string(*asset.height));
    addFact(table, "codec", asset.videoCodecFourCC);
    if (asset.frameRate) addFact(table, "frame rate", formatted("%.6g fps", *asset.frameRate));
    if (asset.projectFrameRate)
        addFact(table, "project rate", formatted("%.6g fps", *asset.projectFrameRate));
    if (asset.timecodeFrameRate)
        addFact(table, "timecode counts", timecodeRateText(*asset.timecodeFrameRate));
    if (asset.isOffspeed() && asset.sensorFrameRate)
        addFact(table, "off-speed", "sensor at " + formatted("%.6g fps", *asset.sensorFrameRate));
    if (asset.channelCount) addFact(table, "channels", std::to_string(*asset.channelCount));
    if (asset.sampleRate) addFact(table, "sample rate", formatted("%.6g Hz", *asset.sampleRate));
    if (asset.contentCreatedDate) addFact(table, "created", iso8601(*asset.contentCreatedDate));
    addRecorderFacts(table, asset);
    if (table.empty()) table.add({"nothing could be read", ""});
    return table.text(bold);
}

std::string smartAudioText(const ImportController& controller) {
    const SmartAudioCounts counts = smartAudioCounts(WorkSnapshot(controller));
    std::string loudness =
        counts.measured > 0 ? "Loudness: " + counted(counts.measured, "clip", "clips") + " measured.\n" : "";
    if (controller.smartAudio().state().results.empty()) return loudness;
    std::string text = "Smart Audio: " + counted(counts.clips, "clip", "clips") + " heard, " +
                       std::to_string(counts.chosen) + " of " +
                       counted(counts.channels, "channel", "channels") + " chosen";
    if (counts.unheardRecordings > 0)
        text += "; " + counted(counts.unheardRecordings, "recording", "recordings") + " can't be read";
    return text + ".\n" + loudness;
}

std::string doubtsText(const WorkSnapshot& work, std::span<const std::string> call) {
    const auto doubts = work.doubts().summary(work.groups());
    if (doubts.empty()) return "";
    std::string text = counted(doubts.size(), "doubt", "doubts") + ":\n";
    CureCommands cures(call);
    for (const CardDoubt& doubt : doubts) {
        text += "\n  " + platform::text::printable(doubt.doubt.message);
        if (doubt.groupIDs.size() > 1) text += " (" + counted(doubt.groupIDs.size(), "clip", "clips") + ")";
        text += "\n    cure: " + platform::text::printable(doubt.doubt.cure.text()) + "\n";
        if (const auto command = cures.next(doubt, work)) text += "    run:  " + *command + "\n";
    }
    return text;
}

std::string notComparedText(const SyncGroupList& groups) {
    constexpr std::ptrdiff_t fewest = 3; // of a card, to judge its clock
    const auto hasBoth = [](const SyncGroup& group) {
        return group.matchStatus.isSettled() && !group.isMOS() && !group.isLocked &&
               group.video.channelCount.value_or(0) > 0;
    };
    if (std::ranges::count_if(groups, hasBoth) < fewest) return "";
    return "All sound is placed by timecode only; 'orvanesync diagnose' of the same folders compares it "
           "with what the cameras recorded.\n";
}

} // namespace orvane::cli
