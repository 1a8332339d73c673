#include "OrvaneSyncCLI/Serve/Desk.h"
#include "OrvaneSyncCLI/Serve/Methods.h"

namespace orvane::cli::rpc {

namespace {

using enum Parameter::Kind;

const Parameter sessionId{"sessionId", id};

Error sessionNotFound() { return {ErrorCode::operationFailed, "Session not found"}; }

/// A method that gives nothing.
template <class Operation>
Method doing(std::string_view name, std::vector<Parameter> parameters, Operation operation) {
    return {name, std::move(parameters), [operation](Desk& desk, const Call& call) {
                operation(desk, call);
                return JSON();
            }};
}

/// The same for a session of the list.
template <class Operation>
Method onSession(std::string_view name, std::vector<Parameter> more, Operation operation) {
    std::vector<Parameter> parameters{sessionId};
    for (Parameter& parameter : more) parameters.push_back(parameter);
    return {name, std::move(parameters), [operation](Desk& desk, const Call& call) {
                const UUID session = call.id("sessionId");
                if (desk.sessions->session(session) == nullptr) throw sessionNotFound();
                return operation(desk, session, call);
            }};
}

/// Also opens what lies on the disk and is not in the list.
platform::Task loadSession(Desk& desk, Call call, std::shared_ptr<JSON> /*result*/) {
    const UUID session = call.id("sessionId");
    const platform::Task loading = desk.sessions->load(session, desk.controller);
    co_await loading;
    if (desk.sessions->currentSessionId() != session) throw sessionNotFound();
}

/// Also one whose record can't be read.
void deleteSession(Desk& desk, const Call& call) {
    const UUID session = call.id("sessionId");
    if (!desk.sessions->exists(session)) throw sessionNotFound();
    desk.sessions->deleteSession(session);
}

/// Ends when the session is on the disk; an error of the writing is the answer.
platform::Task saved(Desk& desk, platform::Task saving) {
    const auto session = desk.sessions->currentSessionId();
    co_await saving;
    co_await desk.sessions->flush(); // an edit's own save may have taken the place of this one
    if (!session) co_return;
    if (const auto problem = desk.sessions->saveError(*session))
        throw Error(ErrorCode::operationFailed, *problem);
}

/// Which session is open, and what people should know of it.
JSON sessionState(Desk& desk, const Call&) {
    JSON json = JSON::object();
    if (const auto& session = desk.sessions->currentSessionId())
        json.set("currentSessionId", session->text());
    json.setIfPresent("lastSaveError", desk.sessions->lastSaveError());
    json.setIfPresent("problem", desk.sessions->problem());
    return json;
}

JSON folderNames(Desk& desk, const Call&) {
    JSON::Array names;
    for (std::string& name : desk.sessions->folderNames()) names.emplace_back(std::move(name));
    return names;
}

JSON folderInfo(Desk& desk, const Call& call) {
    const FolderInfo* folder = desk.sessions->folderInfo(call.text("name"));
    return folder == nullptr ? JSON() : toJSON(*folder);
}

JSON suggestedName(Desk& desk, const UUID& session, const Call&) {
    const auto name = desk.sessions->suggestedSessionName(session);
    return name ? JSON(*name) : JSON();
}

std::vector<Method> openingMethods() {
    return {
        Method("sessions", {},
               [](Desk& desk, const Call&) { return toJSONArray(desk.sessions->sessions()); }),
        Method("sessionState", {}, sessionState),
        Method::later("newSession", {},
                      [](Desk& desk, const Call&, const std::shared_ptr<JSON>&) {
                          return saved(desk, desk.sessions->newSession(*desk.controller));
                      }),
        Method::later("saveSession", {{"name", text, true}},
                      [](Desk& desk, const Call& call, const std::shared_ptr<JSON>&) {
                          return saved(desk,
                                       desk.sessions->save(*desk.controller, call.textIfPresent("name")));
                      }),
        Method::later("loadSession", {sessionId}, loadSession),
        Method::later("loadMostRecentSession", {},
                      [](Desk& desk, const Call&, const std::shared_ptr<JSON>&) {
                          return desk.sessions->loadMostRecentSession(desk.controller);
                      }),
        onSession("renameSession", {{"name", text}},
                  [](Desk& desk, const UUID& session, const Call& call) {
                      desk.sessions->rename(session, call.text("name"));
                      return JSON();
                  }),
        onSession("setSessionFolder", {{"folder", text, true}},
                  [](Desk& desk, const UUID& session, const Call& call) {
                      desk.sessions->setFolder(session, call.textIfPresent("folder"));
                      return JSON();
                  }),
        doing("deleteSession", {sessionId}, deleteSession),
        onSession("suggestedSessionName", {}, suggestedName),
    };
}

std::vector<Method> folderMethods() {
    const Parameter forFolder{"forFolder", text};
    return {
        Method("folderNames", {}, folderNames),
        Method("createFolder", {{"name", text}},
               [](Desk& desk, const Call& call) {
                   return JSON(desk.sessions->createFolder(call.text("name")));
               }),
        Method("renameFolder", {{"from", text}, {"to", text}},
               [](Desk& desk, const Call& call) {
                   return JSON(desk.sessions->renameFolder(call.text("from"), call.text("to")));
               }),
        doing("deleteEmptyFolder", {{"name", text}},
              [](Desk& desk, const Call& call) { desk.sessions->deleteEmptyFolder(call.text("name")); }),
        Method("folderInfo", {{"name", text}}, folderInfo),
        doing("setLockitProject", {forFolder, {"projectID", text, true}},
              [](Desk& desk, const Call& call) {
                  desk.sessions->setLockitProject(call.text("forFolder"), call.textIfPresent("projectID"));
              }),
        doing("setMetadataPrefix", {forFolder, {"prefix", text, true}},
              [](Desk& desk, const Call& call) {
                  desk.sessions->setMetadataPrefix(call.text("forFolder"), call.textIfPresent("prefix"));
              }),
        doing("setActivePreset", {forFolder, {"presetName", text, true}},
              [](Desk& desk, const Call& call) {
                  desk.sessions->setActivePreset(call.text("forFolder"), call.textIfPresent("presetName"));
              }),
    };
}

} // namespace

std::vector<Method> sessionMethods() {
    std::vector<Method> methods = openingMethods();
    for (Method& method : folderMethods()) methods.push_back(std::move(method));
    return methods;
}

} // namespace orvane::cli::rpc
