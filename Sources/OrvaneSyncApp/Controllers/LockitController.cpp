#include "OrvaneSyncApp/Controllers/LockitController.h"

#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncCore/Services/Network/LockitMatches.h"
#include "Platform/Completion.h"
#include "Platform/OnQueue.h"
#include "Platform/Stop.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace orvane {

using platform::Task;

namespace {

constexpr const char* notSignedIn =
    "Not signed in to LockitNetwork. Settings → Metadata → “Sign In with LockitNetwork”.";
constexpr const char* noDays = "The Lockit project has no shooting days (projectdays). Sync not possible.";
constexpr const char* rejected = "Not authorized (401). Please sign in again in Settings → Metadata.";
constexpr const char* notSignedInToChoose =
    "Not signed in to LockitNetwork.\n\nSettings → Metadata → “Sign In with LockitNetwork”, then pick a "
    "project here.";
constexpr const char* signInRequired = "Sign in to LockitNetwork is required.";

/// Why the account is not signed in: `usual`, or that the key store with its sign-in is locked.
std::string whyNotSignedIn(const LockitOAuthService& account, const char* usual) {
    return account.state().isKeyStoreLocked ? OAuthError(OAuthError::Kind::keyStoreLocked).what() : usual;
}

bool isRejection(const std::exception_ptr& raised) {
    try {
        std::rethrow_exception(raised);
    } catch (const LockitError& error) {
        return error.kind() == LockitError::Kind::unauthorized;
    } catch (...) {
        return false;
    }
}

std::string descriptionOf(const std::exception_ptr& raised) {
    try {
        std::rethrow_exception(raised);
    } catch (const std::exception& error) {
        return error.what();
    } catch (const platform::Stopped& stopped) {
        return stopped.what();
    }
}

/// Signs out after the service rejected the token. The token is of no use, so a failure to delete it is
/// ignored.
Task signedOut(std::shared_ptr<LockitOAuthService> account) {
    const Task leaving = account->signOut();
    try {
        co_await leaving;
    } catch (const platform::CredentialError&) { // ignored, see above
    }
}

/// Gets an answer of the service for a screen. If that fails, throws LockitRefusal with a message that `what`
/// could not be loaded.
Task answered(std::shared_ptr<LockitOAuthService> account, std::string what,
              std::function<Task(const LockitNetworkClient&)> ask) {
    auto gettingReady = account->readiness();
    co_await gettingReady;
    account->configuration().requireLockit();
    const Task revalidating = account->revalidateSignInState();
    co_await revalidating;
    if (!account->state().isSignedIn) throw LockitRefusal(whyNotSignedIn(*account, notSignedInToChoose));
    std::exception_ptr raised;
    try {
        const Task asking = ask(account->makeClient());
        co_await asking;
        co_return;
    } catch (const std::exception&) {
        raised = std::current_exception();
    }
    if (!isRejection(raised)) throw LockitRefusal("Could not load " + what + ": " + descriptionOf(raised));
    const Task leaving = signedOut(account);
    co_await leaving;
    throw LockitRefusal(signInRequired);
}

} // namespace

const char* const LockitController::noProject =
    "No Lockit project assigned. Assign one to the folder (= production) first, via the “Lockit” pill on the "
    "folder header.";

struct LockitController::Sync {
    Sync(LockitNetworkClient itsClient, std::string project, std::uint64_t undoMark, SyncGroupList clips)
        : client(std::move(itsClient)), projectID(std::move(project)), mark(undoMark), before(clips),
          layer(std::make_shared<LockitLayer>(std::move(clips))) {}

    const LockitNetworkClient client;
    const std::string projectID;
    const std::uint64_t mark; ///< the undo mark when the sync began
    const SyncGroupList before;
    /// Used by only one piece of work at a time, not on the interface thread.
    std::shared_ptr<LockitLayer> layer;
    std::shared_ptr<const LockitFilenames> names;
    std::size_t dayCount = 0;
    std::vector<std::string> matchingDays; ///< labels of the days
    int clipsWithMetadata = 0;             ///< after the last day that was applied
    std::size_t clipsWithout = 0;          ///< clips without metadata, after the last day that was applied
    std::size_t matchesBeingApplied = 0;   ///< of the day that is being applied
    std::size_t sameNames = 0;             ///< clips with the same file name as an earlier clip

    /// Whether this many matches could give every clip metadata, so that no other day would be needed.
    bool mayBeLast(std::size_t matches) const {
        return matchesBeingApplied + matches + sameNames >= clipsWithout;
    }
    /// Every clip has metadata, so no other day is requested.
    bool isComplete = false;
};

Task LockitController::syncLockitNetwork(std::shared_ptr<LockitOAuthService> account,
                                         std::optional<std::string> projectID) {
    work_.notices.assertOnMainThread();
    if (!syncing_ || syncing_->isDone())
        syncing_ = work_.running.add(sync(work_.weak(this), std::move(account), std::move(projectID)));
    return *syncing_;
}

Task LockitController::sync(Weak weak, std::shared_ptr<LockitOAuthService> account,
                            std::optional<std::string> projectID) {
    auto gettingReady = account->readiness();
    co_await gettingReady;
    if (!account->configuration().hasLockit()) {
        try {
            account->configuration().requireLockit();
        } catch (const ServiceNotConfigured& error) {
            if (auto self = weak.lock()) self->end(SyncEnd::failed, error.what());
        }
        co_return;
    }
    if (projectID.value_or("").empty()) {
        if (auto self = weak.lock()) self->end(SyncEnd::failed, noProject);
        co_return;
    }
    const Task revalidating = account->revalidateSignInState();
    co_await revalidating;
    auto self = weak.lock();
    if (!self) co_return;
    if (!account->state().isSignedIn) {
        self->end(SyncEnd::failed, whyNotSignedIn(*account, notSignedIn));
        co_return;
    }
    self->isSyncingLockit_ = true;
    self->progress_ = {};
    self->work_.notify(ImportField::lockit);
    const auto sync = std::make_shared<Sync>(account->makeClient(), std::move(*projectID),
                                             self->work_.undoMark(), self->work_.syncGroups());
    self.reset();
    std::exception_ptr raised;
    bool isStopped = false;
    try {
        const Task asking = askDayByDay(weak, sync);
        co_await asking;
    } catch (const platform::Stopped&) {
        raised = std::current_exception();
        isStopped = true;
    } catch (const std::exception&) {
        raised = std::current_exception();
    }
    if (sync->dayCount > 0 && sync->names) {
        const Task making = makeStep(weak, sync);
        co_await making;
    }
    if (raised && isRejection(raised)) {
        const Task leaving = signedOut(account);
        co_await leaving;
    }
    self = weak.lock();
    if (!self) co_return;
    if (raised)
        self->endFailed(raised);
    else
        self->endDone(*sync);
    // Large objects are destroyed on the queue.
    self->work_.documents->post([layer = std::move(sync->layer), names = std::move(sync->names)] {});
    if (isStopped) std::rethrow_exception(raised);
}

namespace {

/// The request for one day. Its token is read at once; the request is sent when it is known to be needed. If
/// this is destroyed, the answer is no longer waited for.
class DayRequest {
  public:
    DayRequest(const std::shared_ptr<platform::MainThread>& mainThread, const LockitNetworkClient& client,
               const std::string& projectID, const std::string& day,
               const std::shared_ptr<const LockitFilenames>& names)
        : response_(std::make_shared<ClipMatchResponse>()),
          received_(std::make_shared<platform::Completion>(mainThread)),
          mostMatches_(std::make_shared<std::optional<std::size_t>>()), sending_(mainThread),
          matching_(client.matchClips(
              projectID, day, names, response_,
              {sending_.task(), [received = received_, known = mostMatches_](std::size_t most) {
                   *known = most;
                   received->end();
               }})) {
        matching_.whenDone([received = received_](const std::exception_ptr&) { received->end(); });
    }
    DayRequest(const DayRequest&) = delete;
    DayRequest& operator=(const DayRequest&) = delete;
    ~DayRequest() { matching_.requestStop(); }

    void send() {
        isSent_ = true;
        sending_.end();
    }
    bool isSent() const { return isSent_; }
    /// Ends when the answer has arrived, or when it is known that none will.
    const Task& received() const { return received_->task(); }
    /// The largest number of matches that the answer can contain; absent if none has arrived.
    std::optional<std::size_t> mostMatches() const { return *mostMatches_; }
    const Task& matching() const { return matching_; }
    const std::shared_ptr<ClipMatchResponse>& response() const { return response_; }

  private:
    bool isSent_ = false;
    const std::shared_ptr<ClipMatchResponse> response_;
    const std::shared_ptr<platform::Completion> received_;
    const std::shared_ptr<std::optional<std::size_t>> mostMatches_;
    platform::Completion sending_;
    const Task matching_;
};

} // namespace

Task LockitController::askDayByDay(Weak weak, std::shared_ptr<Sync> sync) {
    const auto days = std::make_shared<std::vector<LockitShootingDay>>();
    const Task listing = sync->client.listShootingDays(sync->projectID, days);
    co_await listing;
    sync->dayCount = days->size();
    if (days->empty()) co_return;
    auto self = weak.lock();
    if (!self) co_return;
    struct Named {
        std::shared_ptr<const LockitFilenames> names;
        std::size_t sameNames = 0, clipsWithout = 0;
    };
    auto naming =
        platform::onQueue(*self->work_.documents, self->work_.environment.mainThread,
                          [groups = self->work_.syncGroups()](const std::stop_token& stop) {
                              platform::StopCheck check(stop);
                              std::vector<std::string> filenames;
                              filenames.reserve(groups.size());
                              std::unordered_set<std::string_view> different;
                              for (const SyncGroup& group : groups) {
                                  check();
                                  filenames.push_back(group.video.filename);
                                  different.insert(group.video.filename);
                              }
                              return Named{std::make_shared<const LockitFilenames>(std::move(filenames)),
                                           groups.size() - different.size(),
                                           groups.size() - static_cast<std::size_t>(lockitClipCount(groups))};
                          });
    self.reset();
    Named named = co_await naming;
    sync->names = std::move(named.names);
    sync->sameNames = named.sameNames;
    sync->clipsWithout = named.clipsWithout;
    const Task matching = matchDays(weak, sync, days);
    co_await matching;
}

/// A day is applied while the answer of the next one is received and decoded. What was answered before a
/// failure is applied before the failure ends the sync.
Task LockitController::matchDays(Weak weak, std::shared_ptr<Sync> sync,
                                 std::shared_ptr<const std::vector<LockitShootingDay>> days) {
    std::unique_ptr<DayRequest> next;
    Task applying = Task::ended();
    for (std::size_t i = 0; i < days->size() && !sync->isComplete; ++i) {
        auto self = weak.lock();
        if (!self) co_return;
        self->progress_ = {static_cast<int>(i), static_cast<int>(days->size())};
        self->work_.notify(ImportField::lockit);
        const auto mainThread = self->work_.environment.mainThread;
        self.reset();
        const auto request = [&](std::size_t day) {
            return std::make_unique<DayRequest>(mainThread, sync->client, sync->projectID, (*days)[day].uuid,
                                                sync->names);
        };
        const std::unique_ptr<DayRequest> asked = next ? std::exchange(next, nullptr) : request(i);
        asked->send();
        if (i + 1 < days->size()) next = request(i + 1);
        // If another day is needed in any case, it is requested at once, so that the service works on it in
        // the meantime.
        const auto askNext = [&](std::size_t matches) {
            if (next && !sync->mayBeLast(matches)) next->send();
        };
        std::exception_ptr raised;
        try {
            co_await asked->received();
            if (const auto most = asked->mostMatches()) askNext(*most);
            co_await asked->matching();
        } catch (...) {
            raised = std::current_exception();
        }
        co_await applying;
        if (raised) std::rethrow_exception(raised);
        if (sync->isComplete) co_return;
        const auto& matches = asked->response()->matches;
        askNext(matches ? matches->size() : 0);
        applying = applyDay(weak, sync, asked->response(), (*days)[i].label());
        if (!next || !next->isSent()) co_await applying;
    }
    co_await applying;
}

/// If the clips are edited while the matches are looked up, the edit is kept: the day, which the layer has
/// stored by then, is applied to the edited clips.
Task LockitController::applyDay(Weak weak, std::shared_ptr<Sync> sync,
                                std::shared_ptr<ClipMatchResponse> response, std::string label) {
    sync->matchesBeingApplied = response->matches ? response->matches->size() : 0;
    int updated = 0;
    for (;;) {
        auto self = weak.lock();
        if (!self) co_return;
        const SyncGroupList before = self->work_.syncGroups();
        struct Applied {
            SyncGroupList groups;
            LockitLayer::Applied counts;
        };
        auto applying = platform::onQueue(
            *self->work_.documents, self->work_.environment.mainThread,
            [layer = sync->layer, response, groups = before](const std::stop_token& stop) mutable {
                const auto counts = layer->apply(groups, std::exchange(*response, {}), stop);
                return Applied{std::move(groups), counts};
            });
        self.reset();
        Applied applied = co_await applying;
        self = weak.lock();
        if (!self) co_return;
        updated = std::max(updated, applied.counts.updated); // later rounds have no response to count
        if (!self->work_.syncGroups().changesSince(before).empty()) continue;
        const std::size_t count = before.size();
        const auto known = static_cast<std::size_t>(applied.counts.withMetadata);
        sync->clipsWithMetadata = applied.counts.withMetadata;
        sync->clipsWithout = count - std::min(known, count);
        sync->matchesBeingApplied = 0;
        sync->isComplete = known == count;
        if (updated > 0) sync->matchingDays.push_back(std::move(label));
        if (!applied.groups.changesSince(before).empty())
            self->work_.changeClips([&](SyncGroupList& clips) { clips = std::move(applied.groups); });
        co_return;
    }
}

/// Makes the whole sync one undo step on top of the edits that were made during it. Undoing that step leaves
/// those edits, and the steps before it contain nothing of the sync.
Task LockitController::makeStep(Weak weak, std::shared_ptr<Sync> sync) {
    for (;;) {
        auto self = weak.lock();
        if (!self || self->work_.isUndoClearedSince(sync->mark)) co_return; // other work was opened
        const SyncGroupList present = self->work_.syncGroups();
        std::vector<SyncGroupList> ofSteps = self->work_.clipsOfStepsSince(sync->mark);
        const std::uint64_t markNow = self->work_.undoMark();
        struct Step {
            bool isOne = false;
            SyncGroupList present, before;
            std::vector<SyncGroupList> ofSteps;
        };
        auto making = platform::onQueue(
            *self->work_.documents, self->work_.environment.mainThread,
            [layer = sync->layer, start = sync->before, present, ofSteps = std::move(ofSteps)]() mutable {
                Step step;
                step.present = present;
                // If nothing else has changed the clips, those of the beginning are shared.
                const bool isAlone = ofSteps.empty() && layer->isUnchangedSince(present);
                layer->reapply(step.present);
                step.before = isAlone ? std::move(start) : layer->without(step.present);
                step.isOne = !layer->isEmpty() && !step.before.changesSince(step.present).empty();
                for (SyncGroupList& groups : ofSteps)
                    step.ofSteps.push_back(layer->without(std::move(groups)));
                return step;
            });
        self.reset();
        Step step = co_await making;
        self = weak.lock();
        if (!self) co_return;
        if (self->work_.undoMark() != markNow || !self->work_.syncGroups().changesSince(present).empty())
            continue;
        if (!step.isOne) co_return;
        self->work_.notices.together([&] {
            if (!step.present.changesSince(present).empty())
                self->work_.changeClips([&](SyncGroupList& clips) { clips = std::move(step.present); });
            self->work_.addStepSince(sync->mark, undoSteps::syncLockitNetwork, std::move(step.ofSteps),
                                     std::move(step.before));
        });
        co_return;
    }
}

void LockitController::end(SyncEnd how, std::string status) {
    isSyncingLockit_ = false;
    lastSyncEnd_ = how;
    lockitSyncStatus_ = std::move(status);
    work_.notify(ImportField::lockit);
}

void LockitController::endFailed(const std::exception_ptr& raised) {
    if (isRejection(raised)) return end(SyncEnd::failed, rejected);
    try {
        std::rethrow_exception(raised);
    } catch (const LockitError& error) {
        if (error.kind() == LockitError::Kind::httpError)
            return end(SyncEnd::failed,
                       "LockitNetwork server error HTTP " + std::to_string(error.status()) + ".");
    } catch (...) { // handled below
    }
    end(SyncEnd::failed, "Lockit sync failed: " + descriptionOf(raised));
}

void LockitController::endDone(const Sync& sync) {
    if (sync.dayCount == 0) return end(SyncEnd::failed, noDays);
    const std::string days = std::to_string(sync.dayCount);
    if (sync.clipsWithMetadata > 0)
        return end(SyncEnd::matched, "✓ Matched " + std::to_string(sync.clipsWithMetadata) + " of " +
                                         std::to_string(work_.syncGroups().size()) +
                                         " clips with LockitNetwork (shooting day(s): " +
                                         platform::text::joined(sync.matchingDays, ", ") + "; checked " +
                                         days + " days).");
    end(SyncEnd::noMatches,
        "No matches across all " + days +
            " shooting days.\n• Clips sent: " + std::to_string(sync.names->filenames.size()) +
            ", example: " + (sync.names->filenames.empty() ? "—" : sync.names->filenames.front()) +
            "\nSince not a single day matched, it's a filename-format mismatch: Lockit likely knows the "
            "clips "
            "under different names (e.g. without extension, or .mxf instead of .mov). Tell me how a clip is "
            "named in LockitNetwork and I'll adjust the matching.");
}

Task LockitController::loadProjects(std::shared_ptr<LockitOAuthService> account,
                                    std::shared_ptr<std::vector<LockitProject>> projects) {
    const Task loading =
        answered(std::move(account), "projects",
                 [projects](const LockitNetworkClient& client) { return client.listProjects(projects); });
    co_await loading;
    std::ranges::stable_sort(*projects, [](const LockitProject& a, const LockitProject& b) {
        return platform::text::compareLocalizedStandard(a.name, b.name) < 0;
    });
}

Task LockitController::loadShootingDays(std::shared_ptr<LockitOAuthService> account, std::string projectID,
                                        std::shared_ptr<std::vector<LockitShootingDay>> days) {
    return answered(
        std::move(account), "the shooting days",
        [projectID = std::move(projectID), days = std::move(days)](const LockitNetworkClient& client) {
            return client.listShootingDays(projectID, days);
        });
}

} // namespace orvane
