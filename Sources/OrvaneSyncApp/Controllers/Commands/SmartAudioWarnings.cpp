#include "OrvaneSyncApp/Controllers/Commands/WorkJSON.h"
#include "OrvaneSyncApp/Controllers/Commands/WorkWarnings.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Export/ExportPreview.h"
#include "OrvaneSyncCore/Services/SmartAudio/MasterGain.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioRouter.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <set>
#include <string_view>

namespace orvane {

namespace {

bool isWordOf(const std::string& name, std::string_view word) {
    const auto isLetter = [&](std::size_t at) {
        return at < name.size() && ((name[at] >= 'a' && name[at] <= 'z') || (name[at] & 0x80) != 0);
    };
    for (std::size_t at = name.find(word); at != std::string::npos; at = name.find(word, at + 1))
        if ((at == 0 || !isLetter(at - 1)) && !isLetter(at + word.size())) return true;
    return false;
}

/// By the name that the recorder gave the channel.
bool isTimecode(const std::string& trackName) {
    const std::string name = platform::text::lowercased(trackName);
    return isWordOf(name, "ltc") || isWordOf(name, "tc") || isWordOf(name, "timecode");
}

/// What Smart Audio made of one clip.
struct AnalysedClip {
    const SyncGroup& group;
    const SmartAudioResult& result;
    const FileNames& names;
    Take take = takeOf(group, assumedChannels);
    std::string files = filesText(group, take, names); ///< as messages name them
};
using Warnings = std::vector<std::string>;

Warnings unheardWarnings(const AnalysedClip& analysed) {
    const auto& [group, result, names, take, files] = analysed;
    if (result.isHeard()) return {};
    const auto failure = readFailureOf(result);
    std::string warning = "Smart Audio can't read the sound of " + files +
                          (failure ? " (" + std::string(failure->what()) + "); " : "; ");
    if (!group.manualActiveTracks.empty()) return {warning + "its channels stay as they were chosen"};
    if (result.tracks.empty() || !result.bestTrackIndex)
        return {warning + "all its channels stay switched on"};
    return {warning + "only its channel " + std::to_string(*result.bestTrackIndex) + " stays switched on"};
}

Warnings lengthWarnings(const AnalysedClip& analysed) {
    constexpr double most = SmartAudioRouter::mostSeconds;
    const auto& [group, result, names, take, files] = analysed;
    if (!result.isHeard()) return {};
    Warnings warnings;
    for (const IncompleteFile& file : result.incompleteFiles) {
        if (file.heardSeconds <= 0)
            warnings.push_back(file.filename + " can't be read; its place in " + files + " is silent");
        else if (SmartAudioRouter::endsEarly(file.heardSeconds, file.promisedSeconds))
            warnings.push_back(earlyEndWarning(file.filename, file.heardSeconds, file.promisedSeconds));
    }
    if (!warnings.empty()) return warnings;
    if (SmartAudioRouter::endsEarly(result))
        return {earlyEndWarning(files, result.heardSeconds, result.promisedSeconds)};
    if (result.promisedSeconds < most + smartAudioWindowSeconds) return {};
    return {"Smart Audio analyzed only the first " + clockText(most) + " of the " +
            clockText(result.promisedSeconds) + " of " + files};
}

/// Timecode is steadier than any sound, so an analysis may choose its channel.
Warnings timecodeWarnings(const AnalysedClip& analysed) {
    const auto& [group, result, names, take, files] = analysed;
    if (!result.isHeard() || group.manualActiveTracks.empty()) return {};
    std::set<int> timecode;
    for (const IXMLTrack& track : namedChannels(group, take))
        if (isTimecode(track.name)) timecode.insert(track.channelIndex);
    const auto& active = group.manualActiveTracks;
    if (!std::ranges::includes(timecode, active)) return {};
    return {"of " + files + " only channel " + std::to_string(*active.begin()) +
            " is switched on, by its name timecode; --no-smart-audio leaves every channel on"};
}

/// The recordings that Smart Audio could not read at all, each once, as messages name them.
std::vector<std::string> unheardRecordings(const WorkSnapshot& work) {
    std::vector<std::string> names;
    std::set<std::string_view> paths; // several cameras may have the same recording
    const auto& results = work.smartAudioResults();
    for (const SyncGroup& group : work.groups()) {
        const auto result = results.find(group.id);
        if (result == results.end() || group.isMOS() || result->second->isHeard()) continue;
        if (paths.insert(group.primaryAudio()->url.path).second)
            names.push_back(filesText(group, takeOf(group, assumedChannels), work.fileNames()));
    }
    return names;
}

std::string warningOfUnheard(const std::vector<std::string>& names) {
    return "Smart Audio can't read the sound of " + counted(std::ssize(names), "recording", "recordings") +
           ": " + firstAndMore(names) +
           "; check that the card or drive is connected and run Smart Audio again";
}

void addPassedOver(const WorkSnapshot& work, Warnings& warnings) {
    const auto& passedOver = work.passedOver;
    for (const SyncGroup& group : work.groups())
        if (passedOver.contains(group.id) && !group.isMOS())
            warnings.push_back("Smart Audio left out " + work.fileNames().of(group.video) +
                               ": all its channels are excluded from the analysis; include one to have it "
                               "analyzed");
}

/// Adds the warnings of clips that were measured.
void addLoudness(const WorkSnapshot& work, Warnings& warnings) {
    constexpr double riskyGainDB = 12;
    std::vector<std::string> silent, raised;
    for (const SyncGroup& group : work.groups()) {
        if (!group.measuredLUFS || !group.masterGainAuto || group.isMOS()) continue;
        const std::string name = work.fileNames().of(group.video);
        if (group.masterGainDB > riskyGainDB)
            raised.push_back(name);
        else if (*group.measuredLUFS <= MasterGain::unmeasuredLUFS)
            silent.push_back(name);
    }
    if (!silent.empty())
        warnings.push_back("no loudness could be measured for " + firstAndMore(silent) +
                           ": the sound is silent or can't be read; the master gain stays as it is");
    if (!raised.empty())
        warnings.push_back("the master gain is above +12 dB for " + firstAndMore(raised) +
                           ": the source is very quiet and may clip; consider the Documentary preset (" +
                           std::string(settings::smartAudioPreset.key) + ") or another " +
                           std::string(settings::smartAudioTargetLUFS.key));
}

} // namespace

std::optional<ReadFailed> readFailureOf(const SmartAudioResult& result) {
    if (!result.tracks.empty() || result.incompleteFiles.empty()) return std::nullopt;
    return ReadFailed(result.incompleteFiles.front());
}

SmartAudioCounts smartAudioCounts(const WorkSnapshot& work) {
    SmartAudioCounts counts;
    for (const SyncGroup& group : work.groups())
        if (group.measuredLUFS && !group.isMOS()) ++counts.measured;
    const auto& results = work.smartAudioResults();
    for (const SyncGroup& group : work.groups()) {
        const SmartAudioResult* result = results.heard(group.id);
        if (result == nullptr || group.isMOS()) continue;
        ++counts.clips;
        counts.channels += static_cast<std::int64_t>(result->tracks.size());
        counts.chosen += static_cast<std::int64_t>(group.manualActiveTracks.size());
    }
    counts.unheardRecordings = std::ssize(unheardRecordings(work));
    return counts;
}

std::optional<std::string> unheardWarning(const WorkSnapshot& work) {
    const std::vector<std::string> names = unheardRecordings(work);
    return names.empty() ? std::nullopt : std::optional(warningOfUnheard(names));
}

std::string earlyEndWarning(const std::string& filename, double heardSeconds, double promisedSeconds) {
    return filename + " ends early: " + clockText(heardSeconds) + " of the " + clockText(promisedSeconds) +
           " that its header states could be read";
}

std::vector<std::string> smartAudioWarnings(const WorkSnapshot& work) {
    constexpr std::size_t mostNamed = 3; // if a whole card is missing, one line is enough
    std::vector<std::string> warnings;
    std::set<std::string> said;
    const std::vector<std::string> unheard = unheardRecordings(work);
    const bool areUnheardNamed = unheard.size() <= mostNamed;
    if (!areUnheardNamed) warnings.push_back(warningOfUnheard(unheard));
    const auto& results = work.smartAudioResults();
    for (const SyncGroup& group : work.groups()) {
        const auto result = results.find(group.id);
        if (result == results.end() || group.isMOS()) continue;
        const AnalysedClip analysed{group, *result->second, work.fileNames()};
        if (!areUnheardNamed && !result->second->isHeard()) continue;
        for (const auto about : {&unheardWarnings, &lengthWarnings, &timecodeWarnings})
            for (std::string& warning : about(analysed))
                // Several cameras may have the same recording.
                if (said.insert(warning).second) warnings.push_back(std::move(warning));
    }
    addPassedOver(work, warnings);
    addLoudness(work, warnings);
    return warnings;
}

JSON smartAudioJSON(const WorkSnapshot& work, std::optional<SmartAudioMode> mode) {
    const SmartAudioCounts counts = smartAudioCounts(work);
    JSON::Array problems;
    for (const std::string& warning : smartAudioWarnings(work)) problems.emplace_back(warning);
    JSON json;
    if (mode) json.set("mode", platform::text::lowercased(rawValue(*mode)));
    json.set("clipsHeard", counts.clips);
    json.set("clipsNotAnalyzed",
             ExportPreview::smartAudioCoverage(work.groups(), work.smartAudioResults()).unanalyzed);
    json.set("channels", counts.channels);
    json.set("channelsChosen", counts.chosen);
    json.set("clipsMeasured", counts.measured);
    json.set("problems", std::move(problems));
    return json;
}

} // namespace orvane
