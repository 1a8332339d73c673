#include "OrvaneSyncCLI/Serve/Desk.h"
#include "OrvaneSyncCLI/Serve/Methods.h"

namespace orvane::cli::rpc {

namespace {

using enum Parameter::Kind;

const Parameter sessionId{"sessionId", id};

/// A method that gives nothing.
template <class Operation>
Method doing(std::string_view name, std::vector<Parameter> parameters, Operation operation) {
    return {name, std::move(parameters), [operation](Desk& desk, const Call& call) {
                operation(desk, call);
                return JSON();
            }};
}

/// Ends when the session is on the disk; an error of the writing is the answer.
platform::Task saved(Desk& desk, platform::Task saving) {
    co_await saving;
    co_await desk.sessions->flush(); // an edit's own save may have taken the place of this one
    if (const auto& problem = desk.sessions->lastSaveError())
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

JSON suggestedName(Desk& desk, const Call& call) {
    const auto name = desk.sessions->suggestedSessionName(call.id("sessionId"));
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
        doing("loadSession", {sessionId},
              [](Desk& desk, const Call& call) {
                  desk.sessions->load(call.id("sessionId"), *desk.controller);
              }),
        doing("loadMostRecentSession", {},
              [](Desk& desk, const Call&) { desk.sessions->loadMostRecentSession(*desk.controller); }),
        doing("renameSession", {sessionId, {"name", text}},
              [](Desk& desk, const Call& call) {
                  desk.sessions->rename(call.id("sessionId"), call.text("name"));
              }),
        doing("setSessionFolder", {sessionId, {"folder", text, true}},
              [](Desk& desk, const Call& call) {
                  desk.sessions->setFolder(call.id("sessionId"), call.textIfPresent("folder"));
              }),
        doing("deleteSession", {sessionId},
              [](Desk& desk, const Call& call) { desk.sessions->deleteSession(call.id("sessionId")); }),
        Method("suggestedSessionName", {sessionId}, suggestedName),
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
