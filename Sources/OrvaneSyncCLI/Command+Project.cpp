#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/DocumentOutput.h"
#include "OrvaneSyncCLI/ScanRun.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Models/SyncGroupFields.h"
#include "OrvaneSyncCore/Services/Persistence/ProjectService.h"
#include "Platform/Files.h"
#include "Platform/Text.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane::cli {

namespace {

struct EditWords {
    std::string_view key;
    std::string_view words;
};
/// In the order of the list. An edited field without a row here is shown by its key.
constexpr EditWords editWords[] = {{"isApproved", "approved"},
                                   {"manualAudioOffsetSeconds", "moved"},
                                   {"manualClipName", "renamed"},
                                   {"isPickup", "pickup"},
                                   {"audioAnchorOffsetInAudioSeconds", "anchor"},
                                   {"manualActiveTracks", "tracks"},
                                   {"algorithmExcludedTracks", "tracks"},
                                   {"manualBlockOverrides", "tracks"},
                                   {"isExcludedFromExport", "not exported"},
                                   {"isExcludedFromMulticam", "no multicam"}};

template <class Value>
std::string valueText(const Value& /*value*/) {
    return {};
}
std::string valueText(double seconds) { return formatted(" %+.3f s", seconds); }
std::string valueText(const std::optional<std::string>& text) { return " " + text.value_or(""); }

/// The editor's decisions, in a few words.
std::string editsText(const SyncGroup& decisions) {
    using Edit = std::pair<const EditWords*, std::string>;
    std::vector<Edit> edits;
    forEachFieldOfProjects([&](const auto& field) {
        const auto* row = std::ranges::find(editWords, field.keyInProjects, &EditWords::key);
        const bool hasRow = row != std::end(editWords);
        if ((!hasRow && field.source == FieldSource::found) || !isSet(decisions, field.member)) return;
        const std::string words(hasRow ? row->words : field.keyInProjects);
        edits.emplace_back(row, words + valueText(decisions.*field.member));
    });
    std::ranges::stable_sort(edits, {}, &Edit::first);
    std::vector<std::string> texts;
    for (const auto& [row, text] : edits)
        if (texts.empty() || texts.back() != text) texts.push_back(text);
    return texts.empty() ? "-" : platform::text::joined(texts, ", ");
}

void addPlace(Table& table, std::string name, const std::optional<FileURL>& place) {
    if (!place) return;
    table.add(
        {std::move(name), place->path + (platform::files::exists(place->path) ? "" : " (is not there now)")});
}

void show(Context& context, const std::string& file, bool asJSON) {
    const OrvaneSyncProject project = ProjectService().load({file});
    if (asJSON) {
        context.out << toJSON(project).dump(JSON::Layout::pretty) << "\n";
        return;
    }
    Table places({{file}, {""}});
    places.add({"saved", iso8601(project.savedAt)});
    addPlace(places, "video", project.videoFolderPath);
    addPlace(places, "audio", project.audioFolderPath);
    for (const FileURL& folder : project.scanScope.moreFolders) addPlace(places, "more", folder);
    for (const std::string& glob : project.scanScope.exclusions) places.add({"excluded", glob});
    const SourceCorrections& corrections = project.sourceCorrections;
    if (corrections.soundOffset) places.add({"sound offset", *corrections.soundOffset});
    if (corrections.soundDate) places.add({"sound date", *corrections.soundDate});
    if (corrections.timecodeRate)
        places.add({"timecode rate", std::string(timecodeRate::name(*corrections.timecodeRate))});
    if (corrections.days) places.add({"days", std::string(rawValue(*corrections.days))});
    addPlace(places, "report", project.aleFilePath);
    context.out << places.text(context.mayColour) << "\n";
    Table clips({{"CLIP"}, {"CAMERA FILE"}, {"MATCH"}, {"EDITS"}});
    FileNames files;
    for (const PersistedGroup& group : project.groups) files.add(group.videoPath);
    for (const PersistedGroup& group : project.groups)
        clips.add({group.decisions.clipName, files.of(group.videoPath), group.matchStatusRaw,
                   editsText(group.decisions)});
    if (!clips.empty()) context.out << clips.text(context.mayColour) << "\n";
    Table tracks({{"WILD TRACK"}, {"FILE"}, {"APPROVED"}});
    for (const PersistedWildTrack& track : project.wildTracks)
        tracks.add({track.customName, track.audioPath.lastPathComponent(), track.isApproved ? "yes" : "no"});
    if (!tracks.empty()) context.out << tracks.text(context.mayColour) << "\n";
    context.out << counted(project.groups.size(), "clip", "clips") << ".\n";
}

void project(Context& context, const Arguments& arguments) {
    const auto& words = arguments.positionals();
    if (words.empty()) throw UsageError("project must be followed by show or export");
    const std::string& verb = words.front();
    if (verb != "show" && verb != "export")
        throw UsageError("project must be followed by show or export, not '" + verb + "'");
    if (words.size() != 2) throw UsageError("project " + verb + " takes one file");
    if (verb == "show") return show(context, words[1], arguments.has("--json"));
    RunInputs inputs;
    inputs.addFile(words[1], "the project");
    DocumentOutput output(context, arguments, std::move(inputs));
    ScanRun run(context, arguments, ScanRun::Folders::ofProject);
    run.open(words[1]);
    run.show("Writing the document...");
    output.matching = Matching::isDone;
    output.warnedAlready = run.warnings();
    output.write(run.controller(), [&] { run.clearProgress(); });
}

std::vector<Option> projectOptions() {
    std::vector<Option> options = documentOptions();
    options.push_back({"--no-cache", "", "read every file again; neither use nor keep earlier results"});
    return options;
}

} // namespace

const Command& projectCommand() {
    static const Command command{"project",
                                 "show FILE | export FILE -o OUT.fcpxml [options]",
                                 "Show a project file, or scan its folders again and write its document.",
                                 "orvanesync project show Day1.orvanesync",
                                 projectOptions(),
                                 project};
    return command;
}

} // namespace orvane::cli
