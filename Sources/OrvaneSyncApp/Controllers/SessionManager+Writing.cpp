#include "OrvaneSyncApp/Controllers/SessionManager.h"

#include "Platform/InterfaceThread.h"
#include "Platform/Log.h"
#include "Platform/Text.h"

#include <algorithm>
#include <utility>

namespace orvane {

bool SessionManager::isNewest(const UUID& id, std::uint64_t token) const {
    const auto newest = writeGeneration_.find(id);
    return newest != writeGeneration_.end() && newest->second == token;
}

platform::Task SessionManager::startWriting(const UUID& id) {
    const std::uint64_t token = ++writeGeneration_[id];
    std::erase_if(writes_, [](const platform::Task& task) { return task.isDone(); });
    writes_.push_back(write(weak_from_this(), id, token));
    return writes_.back();
}

/// The order makes a session that opens of every moment at which the process may be killed: the record, by
/// which the session is listed, comes last and is never older than the clips it was written with.
platform::Task SessionManager::write(std::weak_ptr<SessionManager> weak, UUID id, std::uint64_t token) {
    auto self = weak.lock();
    if (!self) co_return;
    // Waits for the writes before it. What is saved meanwhile takes this one's place.
    auto turn = platform::onQueue(*self->queue_, self->mainThread_, [] {});
    self.reset();
    co_await turn;
    self = weak.lock();
    if (!self || !self->isNewest(id, token)) co_return;

    const auto data = std::make_shared<const Unwritten>(self->unwritten_.at(id));
    auto writing = platform::onQueue(*self->queue_, self->mainThread_,
                                     [store = self->store_, writer = self->groupsWriter_, data, id] {
                                         Outcome outcome;
                                         writeSessionWork(store, *writer, id, *data, outcome);
                                         return outcome;
                                     });
    self.reset();
    Outcome outcome = co_await writing;
    self = weak.lock();
    if (!self) co_return;
    self->reportKeptFiles(std::exchange(outcome.kept, {}));
    if (!self->isNewest(id, token)) co_return;

    auto listing = platform::onQueue(*self->queue_, self->mainThread_,
                                     [store = self->store_, data, outcome = std::move(outcome)] {
                                         Outcome whole = outcome;
                                         writeSessionRecord(store, *data, whole);
                                         return whole;
                                     });
    self.reset();
    outcome = co_await listing;
    self = weak.lock();
    if (self && self->isNewest(id, token)) self->finished(id, std::move(outcome));
}

void SessionManager::finished(const UUID& id, Outcome outcome) {
    failures_.erase(id);
    if (!outcome.failures.empty()) {
        failures_[id] = platform::text::joined(outcome.failures, "; ");
    } else if (const auto written = unwritten_.find(id); written != unwritten_.end()) {
        if (id != currentSessionId_) {
            queue_->post([writer = groupsWriter_, id] { writer->closed(id); });
        } else if (const auto& work = written->second.work) {
            knownFolders_ = work->folders.folders;
            knownWildTracks_ = work->wildTracks.tracks;
            areFoldersUnreadable_ = areFoldersUnreadable_ && work->folders.isEmpty();
            deletionProblem_.reset();
            reportProblem();
        }
        unwritten_.erase(written);
    }
    if (outcome.info) adopt(std::move(*outcome.info));
    reportKeptFiles(outcome.kept);
    reportFailures();
}

std::optional<std::string> SessionManager::saveError(const UUID& sessionId) const {
    const auto failure = failures_.find(sessionId);
    return failure == failures_.end() ? std::nullopt : std::optional(failure->second);
}

void SessionManager::reportFailures() {
    std::optional<std::string> failure = folders_.writeFailure();
    if (!failures_.empty()) failure = failures_.begin()->second;
    if (failure) platform::logError("Session save failed: " + *failure);
    if (failure == lastSaveError_) return;
    lastSaveError_ = std::move(failure);
    notify(SessionField::lastSaveError);
}

/// Before the session is read again: nothing newer may be on its way.
void SessionManager::writeNow(const UUID& id) {
    const platform::MayBlock record;
    const auto waiting = unwritten_.find(id);
    if (waiting == unwritten_.end()) return;
    ++writeGeneration_[id];
    const Unwritten data = waiting->second;
    Outcome outcome;
    queue_->sync([&] {
        writeSessionWork(store_, *groupsWriter_, id, data, outcome);
        writeSessionRecord(store_, data, outcome);
    });
    keptWhileOpening_ = outcome.kept;
    finished(id, std::move(outcome));
}

/// What the disk would not take is tried again.
void SessionManager::retryFailedWrites() {
    std::vector<UUID> ids;
    for (const auto& [id, failure] : failures_)
        if (unwritten_.contains(id)) ids.push_back(id);
    for (const UUID& id : ids) startWriting(id);
}

void SessionManager::writeUnwritten() {
    std::vector<UUID> ids;
    for (const auto& [id, data] : unwritten_) ids.push_back(id);
    for (const UUID& id : ids) writeNow(id);
}

platform::Task SessionManager::flush() {
    assertOnMainThread();
    saveScheduledChanges();
    captureNowIfScheduled();
    writeFolderChanges();
    retryFailedWrites();
    return finishWrites(weak_from_this());
}

/// As long as it lives, the timer begins no save.
class SessionManager::Flushing {
  public:
    explicit Flushing(std::weak_ptr<SessionManager> weak) : weak_(std::move(weak)) { count(1); }
    ~Flushing() { count(-1); }
    Flushing(const Flushing&) = delete;
    Flushing& operator=(const Flushing&) = delete;

  private:
    void count(int change) {
        if (const auto self = weak_.lock()) self->flushes_ += change;
    }
    const std::weak_ptr<SessionManager> weak_;
};

platform::Task SessionManager::finishWrites(std::weak_ptr<SessionManager> weak) {
    const Flushing flushing(weak);
    // A save that was overtaken ends early; the one that took its place is waited for, too.
    for (;;) {
        std::optional<platform::Task> next;
        if (const auto self = weak.lock()) {
            const auto found = std::ranges::find_if(
                self->writes_, [](const platform::Task& task) { return !task.isDone(); });
            if (found != self->writes_.end()) next = *found;
        }
        if (!next) co_return;
        co_await *next;
    }
}

/// Writes the record at once, under a fresh token so that a save on its way does not bring the old one back.
/// The clips of that save go on their way again.
void SessionManager::persistRecord(const UUID& id, SessionInfoChange change) {
    const platform::MayBlock record;
    Unwritten& data = this->change(id, std::move(change));
    ++writeGeneration_[id];
    if (!data.work && store_.isDeleted(id)) { // by another process
        const auto controller = autosaveController_.lock();
        if (id != currentSessionId_ || !controller) {
            unwritten_.erase(id);
            failures_.erase(id);
            loadSessionList();
            return reportFailures();
        }
        data.work = std::make_shared<const Work>(workOf(*controller));
        startWriting(id);
        return;
    }
    Outcome outcome;
    if (!data.work) {
        writeSessionRecord(store_, data, outcome);
        return finished(id, std::move(outcome));
    }
    // What follows from clips that are not on the disk yet is written behind them.
    writeSessionRecord(store_, {nullptr, data.info, *data.change.decisions()}, outcome);
    if (outcome.info) adopt(data.info);
    startWriting(id);
}

} // namespace orvane
