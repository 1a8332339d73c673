#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/DocumentOutput.h"
#include "OrvaneSyncCLI/ScanRun.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Services/Persistence/ProjectService.h"
#include "Platform/Files.h"

namespace orvane::cli {

namespace {

/// What the editor decided, in a few words.
std::string editsText(const PersistedGroup& group) {
    std::string text;
    const auto add = [&](bool isSo, const std::string& words) {
        if (isSo) text += (text.empty() ? "" : ", ") + words;
    };
    add(group.isApproved, "approved");
    add(group.manualAudioOffsetSeconds != 0, formatted("moved %+.3f s", group.manualAudioOffsetSeconds));
    add(group.manualClipName.has_value(), "renamed " + group.manualClipName.value_or(""));
    add(group.isPickup, "pickup");
    add(group.audioAnchorOffsetInAudioSeconds.has_value(), "anchor");
    add(!group.manualActiveTracks.empty() || !group.algorithmExcludedTracks.empty() ||
            !group.manualBlockOverrides.empty(),
        "tracks");
    add(group.isExcludedFromExport, "not exported");
    add(group.isExcludedFromMulticam, "no multicam");
    return text.empty() ? "-" : text;
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
        clips.add({group.clipName, files.of(group.videoPath), group.matchStatusRaw, editsText(group)});
    if (!clips.empty()) context.out << clips.text(context.mayColour) << "\n";
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
