#include "OrvaneSyncApp/Controllers/Commands/WorkJSON.h"
#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/DocumentOutput.h"
#include "OrvaneSyncCLI/OpenSession.h"
#include "OrvaneSyncCLI/Printers.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "OrvaneSyncCore/Services/Persistence/PresetManager.h"
#include "OrvaneSyncCore/Services/Persistence/SessionStore.h"
#include "Platform/Text.h"

#include <algorithm>

namespace orvane::cli {

namespace {

std::string placeText(const std::optional<FileURL>& folder) { return folder ? folder->path : "-"; }

void list(Context& context, const SessionStore& store, bool asJSON) {
    const auto sessions = store.list([&](const std::string& problem) { context.warn(problem); });
    if (asJSON) {
        context.out << toJSONArray(sessions).dump(JSON::Layout::pretty) << "\n";
        return;
    }
    if (sessions.empty()) {
        context.out << "No sessions.\n";
        return;
    }
    Table table({{"ID"},
                 {"NAME"},
                 {"FOLDER"},
                 {"CLIPS", Table::Align::right},
                 {"LOCKED", Table::Align::right},
                 {"MODIFIED"}});
    for (const SessionInfo& info : sessions)
        table.add({info.id.text(), info.name, info.folder.value_or(""), std::to_string(info.groupCount),
                   std::to_string(info.lockedCount), iso8601(info.modified)});
    context.out << table.text(context.mayColour);
}

void show(Context& context, const OpenSession& session, bool asJSON) {
    if (asJSON) {
        JSON state = stateJSON(WorkSnapshot(session.controller()));
        state.set("session", toJSON(session.info()));
        state.set("folders", toJSON(session.folders()));
        context.out << state.dump(JSON::Layout::pretty) << "\n";
        return;
    }
    Table table({{session.info().name}, {""}});
    table.add({"id", session.info().id.text()});
    if (session.info().folder) table.add({"folder", *session.info().folder});
    table.add({"video", placeText(session.folders().videoFolder)});
    table.add({"audio", placeText(session.folders().audioFolder)});
    for (const FileURL& folder : session.folders().scope.moreFolders) table.add({"more", placeText(folder)});
    for (const std::string& glob : session.folders().scope.exclusions) table.add({"excluded", glob});
    table.add({"created", iso8601(session.info().created)});
    table.add({"modified", iso8601(session.info().modified)});
    table.add({"locked", std::to_string(session.info().lockedCount)});
    context.out << table.text(context.mayColour) << "\n"
                << stateText(session.controller(), context.mayColour);
}

/// The settings that are kept in a folder; none, with a warning, if they can't be read.
platform::SettingsStore::Values settingsOf(const FolderInfo& folder, const Context& context,
                                           DocumentOutput& output) {
    if (!folder.activeSettingsSnapshot) return {};
    try {
        return PresetManager().values(*folder.activeSettingsSnapshot);
    } catch (const std::runtime_error& error) {
        output.warnedAlready.push_back("the settings of the folder '" + folder.name +
                                       "' can't be read and are left out: " + error.what());
        context.warn(output.warnedAlready.back());
        return {};
    }
}

/// The settings of the session's folder apply to this run; those of the command line have priority.
void useFolder(Context& context, const Arguments& arguments, const SessionStore& store,
               const SessionInfo& info, DocumentOutput& output) {
    const auto folders = *store.readFolderInfos().record;
    const auto folder = std::ranges::find(folders, info.folder.value_or(""), &FolderInfo::name);
    if (!info.folder || folder == folders.end()) return;
    output.document.metadataPrefix = folder->metadataPrefix.value_or("");
    const auto given = arguments.values("--set");
    for (auto& [key, value] : settingsOf(*folder, context, output)) {
        const auto isOfThisKey = [option = key + "="](const std::string& text) {
            return text.starts_with(option);
        };
        if (std::ranges::none_of(given, isOfThisKey)) context.settings->overrideByName(key, std::move(value));
    }
}

void session(Context& context, const Arguments& arguments) {
    const auto& words = arguments.positionals();
    const SessionStore store(AppStorageHelper::sessionsDirectory());
    const bool asJSON = arguments.has("--json");
    const std::string verb = words.empty() ? "list" : words.front();
    if (verb == "list" && words.size() <= 1) return list(context, store, asJSON);
    if (verb != "show" && verb != "export" && verb != "delete")
        throw UsageError("session must be followed by list, show, export or delete, not '" + verb + "'");
    if (words.size() != 2) throw UsageError("session " + verb + " takes one session");
    if (verb == "show")
        return show(context, OpenSession(context, store, sessionNamed(store, words[1])), asJSON);
    if (verb == "export") {
        DocumentOutput output(context, arguments);
        const OpenSession opened(context, store, sessionNamed(store, words[1]));
        useFolder(context, arguments, store, opened.info(), output);
        output.matching = Matching::isDone;
        return output.write(opened.controller());
    }
    const SessionInfo info = sessionNamed(store, words[1]);
    store.remove(info.id);
    if (asJSON)
        context.out << toJSON(info).dump(JSON::Layout::pretty) << "\n";
    else
        context.out << "Deleted the session " << platform::text::printable(info.name) << " ("
                    << counted(info.groupCount, "clip", "clips") << ").\n";
}

} // namespace

const Command& sessionCommand() {
    static const Command command{
        "session",
        "[list | show SESSION | export SESSION -o OUT.fcpxml | delete SESSION] [options]",
        "List the kept sessions; show, export or delete one.",
        "orvanesync session list",
        documentOptions(),
        session,
        "\nSESSION is an id, the beginning of one, or a name.\n"};
    return command;
}

} // namespace orvane::cli
