#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/Commands/UnsavedWork.h"
#include "Platform/Text.h"

namespace orvane::commands {

namespace {

using enum Parameter::Kind;

bool hasSessions(const CommandContext& context) { return !context.sessions->sessions().empty(); }

const Parameter sessionId{"sessionId", id};

Error sessionNotFound() { return {Refusal::failed, "Session not found"}; }

/// A command for a session in the list.
template <class Operation>
Command onSession(std::string_view id, std::string_view title, std::string_view help,
                  const std::vector<Parameter>& more, Operation operation) {
    std::vector<Parameter> parameters{sessionId};
    for (const Parameter& parameter : more) parameters.push_back(parameter);
    return {id, title, help, std::move(parameters), [operation](CommandContext& context, const Call& call) {
                const UUID session = call.id("sessionId");
                if (context.sessions->session(session) == nullptr) throw sessionNotFound();
                return operation(context, session, call);
            }};
}

/// Also opens a stored session that is not in the list.
platform::Task loadSession(CommandContext& context, Call call, std::shared_ptr<JSON> /*result*/) {
    const UUID session = call.id("sessionId");
    if (context.sessions->currentSessionId() != session)
        co_await saveBeforeLeaving(context, call);
    else if (!leavesUnsaved(call))
        co_await context.sessions->flush(); // else it would overtake an earlier command that still saves
    const platform::Task loading = context.sessions->load(session, context.controller);
    co_await loading;
    if (context.sessions->currentSessionId() != session) throw sessionNotFound();
}

platform::Task loadMostRecentSession(CommandContext& context, Call call, std::shared_ptr<JSON> /*result*/) {
    co_await saveBeforeLeaving(context, call);
    const platform::Task loading = context.sessions->loadMostRecentSession(context.controller);
    co_await loading;
}

/// What is not in the list may not be on the disk either, and then the open work stays.
bool isOtherSession(const CommandContext& context, const Call& call) {
    const UUID session = call.id("sessionId");
    return context.sessions->session(session) != nullptr && context.sessions->currentSessionId() != session;
}

/// Also one whose record can't be read.
platform::Task deleteSession(CommandContext& context, Call call, std::shared_ptr<JSON> /*result*/) {
    const UUID session = call.id("sessionId");
    const bool isListed = context.sessions->session(session) != nullptr;
    const auto wasThere = std::make_shared<bool>(false);
    co_await context.sessions->deleteSession(session, wasThere);
    if (!isListed && !*wasThere) throw sessionNotFound();
}

/// Ends when the session is stored. Throws Error if it could not be written.
platform::Task saved(CommandContext& context, platform::Task saving) {
    const auto session = context.sessions->currentSessionId();
    co_await saving;
    co_await context.sessions->flush(); // an edit's own save may have replaced this one
    if (!session) co_return;
    if (const auto problem = context.sessions->saveError(*session)) throw Error(Refusal::failed, *problem);
}

platform::Task newSession(CommandContext& context, Call call, std::shared_ptr<JSON> /*result*/) {
    co_await saveBeforeLeaving(context, call);
    const platform::Task saving = context.sessions->newSession(*context.controller);
    if (leavesUnsaved(call))
        co_await saving;
    else
        co_await saved(context, saving);
}

/// For a change that is in force in the program but could not be written; writing is tried again every few
/// seconds.
Error refusedByDisk(const std::string& problem) {
    return {Refusal::failed, problem + "; it is tried again until it succeeds"};
}

/// Ends when the decisions about these sessions and the list of folders are stored.
platform::Task decided(CommandContext& context, std::vector<UUID> changed) {
    co_await context.sessions->flush();
    for (const UUID& session : changed)
        if (const auto problem = context.sessions->saveError(session)) throw refusedByDisk(*problem);
    if (const auto& problem = context.sessions->folders().writeFailure()) throw refusedByDisk(*problem);
}

/// Folders of sessions are names and no places on a disk.
void refusePath(std::string_view name) {
    const std::string_view trimmed = platform::text::trimmed(name);
    if (!trimmed.empty() && trimmed.find_first_not_of("./") == std::string_view::npos)
        throw Error(Refusal::invalidArguments,
                    "'" + std::string(trimmed) +
                        "' is no name of a folder for sessions; give a name such as 'Day 1'");
}

platform::Task createFolder(CommandContext& context, Call call, std::shared_ptr<JSON> result) {
    refusePath(call.text("name"));
    *result = context.sessions->places().createFolder(call.text("name"));
    co_await decided(context, {});
}

/// Reads the list first, because another process may have moved sessions into the folder.
platform::Task renameFolder(CommandContext& context, Call call, std::shared_ptr<JSON> result) {
    refusePath(call.text("to"));
    co_await context.sessions->loadSessionList();
    std::vector<UUID> moved = context.sessions->list().idsIn(call.text("from"));
    *result = context.sessions->places().renameFolder(call.text("from"), call.text("to"));
    co_await decided(context, std::move(moved));
}

platform::Task deleteEmptyFolder(CommandContext& context, Call call, std::shared_ptr<JSON> /*result*/) {
    co_await context.sessions->loadSessionList(); // another process may have moved sessions into the folder
    context.sessions->places().deleteEmptyFolder(call.text("name"));
    co_await decided(context, {});
}

/// Which session is open, and its warnings.
JSON sessionState(CommandContext& context, const Call&) {
    JSON json = JSON::object();
    if (const auto& session = context.sessions->currentSessionId())
        json.set("currentSessionId", session->text());
    json.setIfPresent("lastSaveError", context.sessions->lastSaveError());
    json.setIfPresent("problem", context.sessions->problem());
    return json;
}

JSON folderNames(CommandContext& context, const Call&) {
    JSON::Array names;
    for (std::string& name : context.sessions->places().folderNames()) names.emplace_back(std::move(name));
    return names;
}

JSON folderInfo(CommandContext& context, const Call& call) {
    const FolderInfo* folder = context.sessions->folders().find(call.text("name"));
    return folder == nullptr ? JSON() : toJSON(*folder);
}

JSON suggestedName(CommandContext& context, const UUID& session, const Call&) {
    const auto name = context.sessions->list().suggestedName(session);
    return name ? JSON(*name) : JSON();
}

std::string givenSessionName(const Call& call) {
    if (platform::text::trimmed(call.text("name")).empty())
        throw Error(Refusal::invalidArguments, "the name of the session is empty");
    return call.text("name");
}

/// A command that decides something about a session in the list; it answers when the decision is stored.
template <class Operation>
Command deciding(std::string_view id, std::string_view title, std::string_view help, Parameter more,
                 Operation operation) {
    return Command::later(
        id, title, help, {sessionId, more},
        [operation](CommandContext& context, const Call& call, const std::shared_ptr<JSON>&) {
            const UUID session = call.id("sessionId");
            if (context.sessions->session(session) == nullptr) throw sessionNotFound();
            operation(context, session, call);
            return decided(context, {session});
        });
}

/// A command that decides something about a folder, with one optional text; it answers when the decision is
/// stored.
template <class Operation>
Command ofFolder(std::string_view id, std::string_view title, std::string_view help, std::string_view what,
                 Operation operation) {
    return Command::later(
        id, title, help, {{"forFolder", text}, {what, text, true}},
        [operation, what](CommandContext& context, const Call& call, const std::shared_ptr<JSON>&) {
            (context.sessions->folders().*operation)(call.text("forFolder"), call.textIfPresent(what));
            return decided(context, {});
        });
}

std::vector<Command> openingCommands() {
    return {
        Command(
            "sessions", "Sessions", "Lists the sessions, most recently changed first.", {},
            [](CommandContext& context, const Call&) { return toJSONArray(context.sessions->sessions()); })
            .alsoBy({"session"}),
        Command("sessionState", "State of the Session", "Gives the open session and whether it is saved.", {},
                sessionState),
        Command::later("newSession", "New Session", "Opens empty work in a session of its own.",
                       {leaveUnsaved}, newSession)
            .otherWork()
            .inMenu(Menu::file, 130, "New"),
        Command::later(
            "saveSession", "Save Session",
            "Saves the open session now, under a name where one is given; work without a session gets "
            "one.",
            {{"name", text, true}},
            [](CommandContext& context, const Call& call, const std::shared_ptr<JSON>&) {
                auto name = call.has("name") ? std::optional(givenSessionName(call)) : std::nullopt;
                context.sessions->beginSessionOfOpenWork(*context.controller);
                return saved(context, context.sessions->save(*context.controller, std::move(name)));
            }),
        Command::later("loadSession", "Open Session", "Opens a session instead of the open work.",
                       {sessionId, leaveUnsaved}, loadSession)
            .alsoBy({"session"})
            .otherWork(isOtherSession)
            .when(hasSessions),
        Command::later("loadMostRecentSession", "Open Most Recent Session",
                       "Opens the session that was changed last.", {leaveUnsaved}, loadMostRecentSession)
            .when(hasSessions),
        deciding("renameSession", "Rename Session", "Names a session.", {"name", text},
                 [](CommandContext& context, const UUID& session, const Call& call) {
                     context.sessions->rename(session, givenSessionName(call));
                 })
            .when(hasSessions),
        deciding("setSessionFolder", "Move Session to Folder", "Puts a session into a folder, or out of it.",
                 {"folder", text, true},
                 [](CommandContext& context, const UUID& session, const Call& call) {
                     context.sessions->places().setFolder(session, call.textIfPresent("folder"));
                 })
            .when(hasSessions),
        Command::later("deleteSession", "Delete Session",
                       "Deletes a session, and closes it where it is open; cannot be taken back.",
                       {sessionId}, deleteSession)
            .alsoBy({"session"})
            .when(hasSessions),
        onSession("suggestedSessionName", "Suggested Name of a Session",
                  "Suggests the folder's name and the next shooting day.", {}, suggestedName)
            .when(hasSessions),
    };
}

std::vector<Command> folderCommands() {
    return {
        Command("folderNames", "Folders", "Lists the folders of sessions.", {}, folderNames),
        Command::later("createFolder", "New Folder",
                       "Makes a folder for sessions; false where the name is taken.", {{"name", text}},
                       createFolder),
        Command::later("renameFolder", "Rename Folder",
                       "Renames a folder of sessions; false where the name is taken.",
                       {{"from", text}, {"to", text}}, renameFolder),
        Command::later("deleteEmptyFolder", "Delete Empty Folder", "Deletes a folder without sessions.",
                       {{"name", text}}, deleteEmptyFolder),
        Command("folderInfo", "One Folder", "Gives what is known of a folder of sessions.", {{"name", text}},
                folderInfo),
        ofFolder("setLockitProject", "Link Folder to a Lockit Project",
                 "Connects a folder with a project of LockitNetwork.", "projectID",
                 &SessionFolderList::setLockitProject),
        ofFolder("setMetadataPrefix", "Set Metadata Prefix of a Folder",
                 "Sets the prefix of the metadata of a folder.", "prefix",
                 &SessionFolderList::setMetadataPrefix),
        ofFolder("setActivePreset", "Set Preset of a Folder", "Sets the preset that goes with a folder.",
                 "presetName", &SessionFolderList::setActivePreset),
    };
}

} // namespace

std::vector<Command> sessionCommands() {
    std::vector<Command> commands = openingCommands();
    for (Command& command : folderCommands()) commands.push_back(std::move(command));
    return commands;
}

} // namespace orvane::commands
