#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "OrvaneSyncApp/Controllers/Commands/WorkJSON.h"
#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/LockitMapping.h"
#include "OrvaneSyncCLI/OpenSession.h"
#include "OrvaneSyncCLI/OperationProgress.h"
#include "OrvaneSyncCLI/ProgressLine.h"
#include "OrvaneSyncCLI/RunUntilDone.h"
#include "OrvaneSyncCLI/SignInHint.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "Platform/CredentialStore.h"
#include "Platform/OnQueue.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <istream>
#include <optional>
#include <string>
#include <vector>

namespace orvane::cli {

namespace {

using platform::Task;
using platform::text::printable;

/// Controllers on their own run loop, and the account.
class LockitRun {
  public:
    LockitRun(Context& context, const Arguments& arguments)
        : context_(context), loop_(platform::RunLoop::create()), progress_(context, arguments.has("--quiet")),
          asJSON_(arguments.has("--json")) {
        work_.controller = ImportController::create({.mainThread = loop_,
                                                     .settings = context.settings,
                                                     .probeCache = nullptr,
                                                     .clock = context.clock});
        // Opening a session applies its folder's settings, which must not become the user's.
        work_.settings = std::make_shared<platform::MemorySettingsStore>();
        work_.sessions =
            SessionManager::create({.mainThread = loop_, .settings = work_.settings, .clock = context.clock});
        work_.showPage = [&context](const std::string& url) { return showPage(context, url); };
        subscription_ = work_.controller->onChange(
            [this](ImportField field) { showProgress(progress_, *work_.controller, field); });
        wait(account().ready());
    }

    LockitOAuthService& account() { return *work_.account(); }
    std::shared_ptr<LockitOAuthService> sharedAccount() { return work_.account(); }
    ImportController& controller() { return *work_.controller; }
    const std::shared_ptr<ImportController>& sharedController() { return work_.controller; }
    SessionManager& sessions() { return *work_.sessions; }
    void wait(const Task& operation) {
        try {
            runUntilDone(*loop_, operation, progress_);
        } catch (const LockitRefusal& refusal) {
            throw CommandError(refusal.what() + signInHint(account()));
        }
    }
    std::shared_ptr<platform::RunLoop> loop() const { return loop_; }
    /// Prints one JSON document, or lines for people.
    void say(const JSON& json, const std::string& text) const {
        context_.out << (asJSON_ ? json.dump(JSON::Layout::pretty) + "\n" : text);
    }
    void sayStatus(const std::string& text) {
        say(lockitStatusJSON(account(), controller().lockit()), text + "\n");
    }
    bool mayColour() const { return context_.mayColour; }

  private:
    /// Runs on the thread that waits for the browser.
    static bool showPage(const Context& context, const std::string& url) {
        const bool isShown = platform::BrowserSession::openInDesktop(url);
        context.err << (isShown ? "Opening browser… Should it not open, open this page yourself:"
                                : "Open this page in a browser:")
                    << "\n\n  " << url
                    << "\n\nOnce you have signed in, the command continues by itself. If it does not, "
                       "paste the address that the page leads to ("
                    << LockitOAuthService::callbackURLScheme << "://...) here:\n"
                    << std::flush;
        return true;
    }

    Context& context_;
    std::shared_ptr<platform::RunLoop> loop_;
    ProgressLine progress_;
    commands::CommandContext work_;
    platform::Subscription subscription_;
    bool asJSON_;
};

/// Reads lines as callbacks until one is accepted or there are no more.
Task pasteCallbacks(Context& context, std::shared_ptr<LockitOAuthService> account,
                    std::shared_ptr<platform::MainThread> mainThread, platform::SerialQueue& reading) {
    for (;;) {
        auto next = platform::onQueue(
            reading, mainThread, [&in = context.in](const std::stop_token&) -> std::optional<std::string> {
                std::string line;
                return std::getline(in, line) ? std::optional(line) : std::nullopt;
            });
        const auto line = co_await next;
        if (!line || account->completeSignIn(*line)) co_return;
        if (platform::text::trimmed(*line).empty()) continue;
        context.err << "That is not it: the address begins with " << LockitOAuthService::callbackURLScheme
                    << "://\n"
                    << std::flush;
    }
}

std::string signedInText(const LockitOAuthService& account) {
    if (account.state().isKeyStoreLocked) return OAuthError(OAuthError::Kind::keyStoreLocked).what();
    if (!account.state().isSignedIn) return "Not signed in to LockitNetwork.";
    return "Signed in to LockitNetwork" +
           (account.state().accountEmail ? " as " + printable(*account.state().accountEmail) : "") + ".";
}

void signIn(Context& context, LockitRun& run, const Arguments&) {
    run.account().configuration().requireLockit();
    const auto reading = platform::SerialQueue::create("callbacks");
    const Task signingIn = run.account().signIn();
    const Task pasting = pasteCallbacks(context, run.sharedAccount(), run.loop(), *reading);
    try {
        run.wait(signingIn);
    } catch (...) {
        pasting.requestStop();
        throw;
    }
    pasting.requestStop();
    run.wait(run.account().accountEmailRefreshed());
    const auto kept = platform::CredentialStore::create(AppStorageHelper::credentialFile())->describe();
    if (!kept.isEncrypted)
        context.warn((kept.isLocked ? "the key store is locked" : "no key store is available") +
                     std::string(": who is signed in is kept in ") + kept.where +
                     ", which you alone can read and which is not encrypted");
    run.sayStatus(signedInText(run.account()));
}

void signOut(Context&, LockitRun& run, const Arguments&) {
    const bool wasSignedIn = run.account().state().isSignedIn || run.account().state().isKeyStoreLocked;
    run.wait(run.account().signOut());
    run.sayStatus(wasSignedIn ? "Signed out of LockitNetwork." : "Nobody is signed in to LockitNetwork.");
}

void status(Context& context, LockitRun& run, const Arguments&) {
    const ServiceConfiguration& service = run.account().configuration();
    if (service.problem && service.hasLockit()) context.warn(*service.problem);
    try {
        service.requireLockit();
        run.sayStatus(signedInText(run.account()) + "\nThe service: " + *service.baseURL);
    } catch (const ServiceNotConfigured& error) {
        run.sayStatus(error.what());
    }
}

void projects(Context&, LockitRun& run, const Arguments&) {
    const auto found = std::make_shared<std::vector<LockitProject>>();
    run.wait(LockitController::loadProjects(run.sharedAccount(), found));
    Table table({{"PROJECT"}, {"NAME"}, {"COMPANY"}, {"KIND"}});
    for (const LockitProject& project : *found)
        table.add({project.uuid, project.name, project.productionCompany.value_or(""),
                   project.isSeries.value_or(false) ? "series" : ""});
    run.say(toJSONArray(*found),
            found->empty() ? "No projects on this Lockit account.\n" : table.text(run.mayColour()));
}

void days(Context&, LockitRun& run, const Arguments& arguments) {
    const auto found = std::make_shared<std::vector<LockitShootingDay>>();
    run.wait(LockitController::loadShootingDays(run.sharedAccount(), arguments.positionals()[1], found));
    Table table({{"DAY"}, {"DATE"}, {"ID"}});
    for (const LockitShootingDay& day : *found) {
        const auto two = [](std::int64_t number) {
            return (number < 10 ? "0" : "") + std::to_string(number);
        };
        const std::string date =
            day.date ? std::to_string(day.date->year) + "-" + two(day.date->month) + "-" + two(day.date->day)
                     : "";
        table.add({day.label(), date, day.uuid});
    }
    run.say(toJSONArray(*found),
            found->empty() ? "The project has no shooting days.\n" : table.text(run.mayColour()));
}

void assign(Context&, LockitRun& run, const Arguments& arguments) {
    const auto& words = arguments.positionals();
    const std::string& folder = words[1];
    const auto project = words.size() > 2 ? std::optional(words[2]) : std::nullopt;
    run.sessions().folders().setLockitProject(folder, project);
    run.wait(run.sessions().flush());
    if (const auto& failure = run.sessions().folders().writeFailure()) throw CommandError(*failure);
    run.say(toJSON(*run.sessions().folders().find(folder)),
            project ? "The folder " + printable(folder) + " has the project " + printable(*project) + ".\n"
                    : "The folder " + printable(folder) + " has no project.\n");
}

/// The service's answers are kept in the session, also for the days before one that failed.
void sync(Context&, LockitRun& run, const Arguments& arguments) {
    const SessionStore store(AppStorageHelper::sessionsDirectory());
    const auto wanted = arguments.value("--session");
    if (!wanted && run.sessions().sessions().empty()) throw CommandError("there is no session");
    const UUID id = wanted ? sessionNamed(store, *wanted).id : run.sessions().sessions().front().id;
    run.wait(run.sessions().load(id, run.sharedController()));
    if (run.sessions().currentSessionId() != id || run.sessions().problem())
        throw CommandError(run.sessions().problem().value_or("the session can't be opened"));
    const SyncGroupList before = run.controller().work().syncGroups();
    run.wait(run.controller().lockit().syncLockitNetwork(run.sharedAccount(),
                                                         run.sessions().places().lockitProjectID(id)));
    if (!run.controller().work().syncGroups().changesSince(before).empty()) {
        run.wait(run.sessions().save(run.controller()));
        run.wait(run.sessions().flush());
        if (const auto problem = run.sessions().saveError(id)) throw CommandError(*problem);
    }
    const LockitController& lockit = run.controller().lockit();
    if (lockit.lastSyncEnd() == LockitController::SyncEnd::failed)
        throw CommandError(lockit.lockitSyncStatus().value_or("") + signInHint(run.account()));
    run.sayStatus(lockit.lockitSyncStatus().value_or(""));
}

struct LockitVerb {
    std::string_view name;
    std::size_t fewestWords; ///< after the verb
    std::size_t mostWords;
    std::string_view takes;
    void (*run)(Context&, LockitRun&, const Arguments&);
};
constexpr std::string_view noMoreWords = "nothing more";
constexpr auto lockitVerbs =
    std::to_array<LockitVerb>({{"status", 0, 0, noMoreWords, status},
                               {"sign-in", 0, 0, noMoreWords, signIn},
                               {"sign-out", 0, 0, noMoreWords, signOut},
                               {"projects", 0, 0, noMoreWords, projects},
                               {"days", 1, 1, "a project", days},
                               {"assign", 1, 2, "a folder of sessions and a project", assign},
                               {"sync", 0, 0, noMoreWords, sync}});

void lockit(Context& context, const Arguments& arguments) {
    const auto& words = arguments.positionals();
    const std::string named = words.empty() ? "status" : words.front();
    if (arguments.has("--session") && named != "sync")
        throw UsageError("--session can be used with sync only");
    if (named == "mapping") return lockitMapping(context, arguments);
    const auto* verb = std::ranges::find(lockitVerbs, named, &LockitVerb::name);
    if (verb == lockitVerbs.end())
        throw UsageError(
            "lockit takes status, sign-in, sign-out, projects, days, assign, sync or mapping, not '" + named +
            "'");
    const std::size_t behind = words.empty() ? 0 : words.size() - 1;
    if (behind < verb->fewestWords || behind > verb->mostWords)
        throw UsageError("lockit " + named + " takes " + std::string(verb->takes));
    LockitRun run(context, arguments);
    verb->run(context, run, arguments);
}

} // namespace

int handOverCallback(std::span<const std::string> words, Context& context) {
    if (words.size() != 2) {
        context.err << "error: " << words.front() << " takes the address that a sign-in leads to\n";
        return wrongUsage;
    }
    if (platform::BrowserSession::deliver(words[1])) return done;
    context.err << "error: no sign-in waits for the browser\n";
    return failed;
}

const Command& lockitCommand() {
    static const Command command{
        "lockit",
        "[status | sign-in | sign-out | projects | days PROJECT | assign FOLDER [PROJECT] | "
        "sync [--session ID] | mapping ...] [options]",
        "Sign in to LockitNetwork, and copy its metadata to the clips of a session.",
        "orvanesync lockit status",
        {{"--session", "ID", "sync: the session, by its id or name (the one that was changed last)"}},
        lockit,
        "\nassign: gives a folder of sessions the project that its sessions are synced with, or none.\n"
        "mapping list | set FIELD TARGET | custom FIELD KEY | reset: where each field goes in Final Cut "
        "Pro.\n"
        "FIELD and TARGET are those that the list shows; custom writes a field under a metadata key of your "
        "own.\n"};
    return command;
}

} // namespace orvane::cli
