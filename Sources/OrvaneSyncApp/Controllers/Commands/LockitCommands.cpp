#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "OrvaneSyncApp/Controllers/Commands/Conditions.h"
#include "OrvaneSyncApp/Controllers/Commands/WorkJSON.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncCore/Services/Metadata/LockitFieldMapping.h"
#include "OrvaneSyncCore/Services/Metadata/MetadataFieldGrouping.h"

namespace orvane::commands {

namespace {

using enum Parameter::Kind;

platform::Task status(CommandContext& context, Call /*call*/, std::shared_ptr<JSON> result) {
    const auto account = context.account();
    auto gettingReady = account->readiness();
    co_await gettingReady;
    *result = lockitStatusJSON(*account, context.controller->lockit());
}

platform::Task signIn(CommandContext& context, const Call& /*call*/,
                      const std::shared_ptr<JSON>& /*result*/) {
    return context.account()->signIn();
}

JSON completeSignIn(CommandContext& context, const Call& call) {
    if (!context.account()->state().isAuthenticating)
        throw Error(Refusal::failed, "No sign-in waits for a callback");
    if (!context.account()->completeSignIn(call.text("callbackURL")))
        throw Error(Refusal::invalidArguments, std::string("completeSignIn: callbackURL must begin with ") +
                                                   LockitOAuthService::callbackURLScheme + "://");
    return {};
}

platform::Task signOut(CommandContext& context, const Call& /*call*/,
                       const std::shared_ptr<JSON>& /*result*/) {
    return context.account()->signOut();
}

platform::Task projects(CommandContext& context, Call /*call*/, std::shared_ptr<JSON> result) {
    const auto found = std::make_shared<std::vector<LockitProject>>();
    const platform::Task loading = LockitController::loadProjects(context.account(), found);
    co_await loading;
    *result = toJSONArray(*found);
}

platform::Task days(CommandContext& context, Call call, std::shared_ptr<JSON> result) {
    const auto found = std::make_shared<std::vector<LockitShootingDay>>();
    const platform::Task loading =
        LockitController::loadShootingDays(context.account(), call.text("projectID"), found);
    co_await loading;
    *result = toJSONArray(*found);
}

platform::Task syncLockit(CommandContext& context, Call /*call*/, std::shared_ptr<JSON> result) {
    const auto controller = context.controller;
    const auto session = context.sessions->currentSessionId();
    const platform::Task syncing = controller->lockit().syncLockitNetwork(
        context.account(), session ? context.sessions->places().lockitProjectID(*session) : std::nullopt);
    co_await syncing;
    *result = controller->lockit().lockitSyncStatus().value_or("");
}

/// Answers when the mapping is stored.
platform::Task setFieldMapping(CommandContext& context, Call call, std::shared_ptr<JSON> /*result*/) {
    const LockitField field = *fromRawValue<LockitField>(call.text("field"));
    const FCPMetaTarget target = *fromRawValue<FCPMetaTarget>(call.text("target"));
    const auto customKey = call.textIfPresent("customKey");
    const auto mainThread = context.controller->work().environment.mainThread;
    // Not inside the co_await expression: there, GCC 12 also destroys the result of the branch that was not
    // run.
    const platform::SettingsWrite write =
        customKey ? LockitFieldMapping::set(*context.settings, target, *customKey, field)
                  : LockitFieldMapping::set(*context.settings, target, field);
    co_await platform::written(write, *mainThread);
}

platform::Task resetFieldMapping(CommandContext& context, Call /*call*/, std::shared_ptr<JSON> /*result*/) {
    const auto mainThread = context.controller->work().environment.mainThread;
    co_await platform::written(LockitFieldMapping::resetToDefaults(*context.settings), *mainThread);
}

JSON groupedMetadata(CommandContext& context, const Call& call) {
    const SyncGroup& group = context.group(call.id("groupID"));
    const auto grouped = [](const std::optional<std::map<std::string, std::string>>& fields) {
        return toJSONArray(
            MetadataFieldGrouping::grouped(fields.value_or(std::map<std::string, std::string>())));
    };
    JSON json;
    json.set("aleMetadata", grouped(group.aleMetadata));
    json.set("lockitMetadata", grouped(group.lockitMetadata));
    return json;
}

} // namespace

std::vector<Command> lockitCommands() {
    return {
        Command::later("lockitStatus", "State of LockitNetwork",
                       "Gives who is signed in, and the result of the last sync.", {}, status)
            .alsoBy({"lockit"}),
        Command::later(
            "signIn", "Sign In with LockitNetwork",
            "Signs in: sends openURL with the page to show, and answers when the user has come back "
            "from it.",
            {}, signIn)
            .alsoBy({"lockit"}),
        Command("completeSignIn", "Paste the Callback",
                "Passes the last address of the sign-in page to the waiting sign-in; answers at once.",
                {{"callbackURL", text}}, completeSignIn)
            .alsoBy({"lockit"})
            .servedAtOnce(),
        Command::later("signOut", "Sign Out", "Forgets who is signed in.", {}, signOut).alsoBy({"lockit"}),
        Command::later("lockitProjects", "Projects of LockitNetwork", "Lists the projects of the account.",
                       {}, projects)
            .alsoBy({"lockit"}),
        Command::later("lockitDays", "Shooting Days of a Project", "Lists the shooting days of a project.",
                       {{"projectID", text}}, days)
            .alsoBy({"lockit"}),
        Command::later("syncLockitNetwork", "Sync LockitNetwork",
                       "Copies the metadata of LockitNetwork to the clips, day by day; returns the outcome.",
                       {}, syncLockit)
            .alsoBy({"sync", "lockit"})
            .undoneBy(undoSteps::syncLockitNetwork)
            .when(hasClipsWhileIdle)
            .inMenu(Menu::file, 250),
        Command("fieldMapping", "Field Mapping", "Gives the target of each field of LockitNetwork.", {},
                [](CommandContext& context, const Call&) {
                    return toJSON(LockitFieldMapping::current(*context.settings));
                })
            .alsoBy({"lockit"}),
        Command::later("setFieldMapping", "Map a Field", "Sets the target of a field of LockitNetwork.",
                       {{.name = "field", .choices = RawValues<LockitField>::texts},
                        {.name = "target", .choices = RawValues<FCPMetaTarget>::texts},
                        {"customKey", text, true}},
                       setFieldMapping)
            .alsoBy({"lockit"}),
        Command::later("resetFieldMapping", "Reset the Field Mapping", "Gives each field its default target.",
                       {}, resetFieldMapping)
            .alsoBy({"lockit"}),
        Command("groupedMetadata", "Metadata of a Clip",
                "Gives the imported metadata of a clip by what it is about.", {groupID}, groupedMetadata),
    };
}

} // namespace orvane::commands
