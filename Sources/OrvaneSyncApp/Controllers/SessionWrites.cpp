#include "OrvaneSyncApp/Controllers/SessionWrites.h"

#include "Platform/OnQueue.h"
#include "Platform/Text.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace orvane {

SessionWrites::SessionWrites(Owner& owner, SessionStore store, platform::SerialQueue& queue,
                             std::shared_ptr<platform::MainThread> mainThread)
    : owner_(owner), store_(std::move(store)), queue_(queue), mainThread_(std::move(mainThread)),
      groupsWriter_(std::make_shared<SessionGroupsWriter>(store_)) {}

const UnwrittenSession* SessionWrites::find(const UUID& id) const {
    const auto found = unwritten_.find(id);
    return found == unwritten_.end() ? nullptr : &found->second;
}

std::size_t SessionWrites::unwrittenClips(const UUID& id) const {
    const UnwrittenSession* waiting = find(id);
    if (waiting == nullptr || !waiting->work || waiting->work->leavesClipsAlone) return 0;
    const auto written = onDisk_.find(id);
    if (written == onDisk_.end()) return waiting->work->groups.size();
    const SyncGroupChanges changes = waiting->work->groups.changesSince(written->second);
    return changes.inserted.size() + changes.changed.size();
}

platform::Task SessionWrites::writeCopies(std::string folder) const {
    std::vector<std::pair<UUID, UnwrittenSession>> sessions;
    for (const auto& [id, data] : unwritten_) {
        if (!data.work || data.work->leavesClipsAlone) continue;
        auto work = std::make_shared<SessionWork>(*data.work);
        work->changesAll();
        UnwrittenSession copy = data;
        copy.work = std::move(work);
        copy.isChanged = true;
        sessions.emplace_back(id, std::move(copy));
    }
    return copying(mainThread_, std::move(folder), std::move(sessions));
}

platform::Task SessionWrites::copying(std::weak_ptr<platform::MainThread> mainThread, std::string folder,
                                      std::vector<std::pair<UUID, UnwrittenSession>> sessions) {
    const auto queue = platform::SerialQueue::create("copies of sessions");
    auto writing = platform::onQueue(
        *queue, mainThread.lock(), [folder = std::move(folder), sessions = std::move(sessions)] {
            const SessionStore store(folder);
            SessionGroupsWriter writer(store);
            SessionWriteOutcome outcome;
            for (const auto& [id, data] : sessions) {
                writeSessionWork(store, writer, id, data, outcome);
                if (outcome.failures.empty()) writeSessionRecord(store, data, outcome);
            }
            if (!outcome.failures.empty())
                throw platform::FileError(platform::text::joined(outcome.failures, "; "));
        });
    co_await writing;
}

void SessionWrites::change(SessionInfo info, const SessionInfoChange& change,
                           std::shared_ptr<const SessionWork> work, bool isChanged) {
    UnwrittenSession& unwritten = unwritten_[info.id];
    unwritten.info = std::move(info);
    unwritten.change.add(change);
    if (work) unwritten.work = std::move(work);
    unwritten.isChanged |= isChanged;
}

bool SessionWrites::isNewest(const UUID& id, std::uint64_t token) const {
    const auto newest = generation_.find(id);
    return newest != generation_.end() && newest->second == token;
}

platform::Task SessionWrites::add(platform::Task task) {
    std::erase_if(tasks_, [](const platform::Task& one) { return one.isDone(); });
    tasks_.push_back(task);
    return task;
}

platform::Task SessionWrites::start(const UUID& id) {
    const std::uint64_t token = ++generation_[id];
    if (removing_.contains(id)) return platform::Task::ended(); // it is written if the deletion fails
    return add(write(weak_from_this(), id, token));
}

/// The order ensures that the session can be opened, at whatever moment the process is killed: the record, by
/// which the session is listed, is written last, and is never older than the clips it was written with.
platform::Task SessionWrites::write(std::weak_ptr<SessionWrites> weak, UUID id, std::uint64_t token) {
    auto self = weak.lock();
    if (!self) co_return;
    // Waits for earlier writes. If the session is saved again in the meantime, that save replaces this one.
    auto turn = platform::onQueue(self->queue_, self->mainThread_, [] {});
    self.reset();
    co_await turn;
    self = weak.lock();
    if (!self || !self->isNewest(id, token)) co_return;

    const auto data = std::make_shared<const UnwrittenSession>(self->unwritten_.at(id));
    auto writing = platform::onQueue(self->queue_, self->mainThread_,
                                     [store = self->store_, writer = self->groupsWriter_, data, id] {
                                         SessionWriteOutcome outcome;
                                         writeSessionWork(store, *writer, id, *data, outcome);
                                         return outcome;
                                     });
    self.reset();
    SessionWriteOutcome outcome = co_await writing;
    self = weak.lock();
    if (!self) co_return;
    self->owner_.reportKeptFiles(id, std::exchange(outcome.kept, {}));
    if (!self->isNewest(id, token)) co_return;

    auto listing = platform::onQueue(self->queue_, self->mainThread_,
                                     [store = self->store_, data, outcome = std::move(outcome)] {
                                         SessionWriteOutcome whole = outcome;
                                         writeSessionRecord(store, *data, whole);
                                         return whole;
                                     });
    self.reset();
    outcome = co_await listing;
    self = weak.lock();
    if (self && self->isNewest(id, token)) self->finished(id, std::move(outcome));
}

void SessionWrites::finished(const UUID& id, SessionWriteOutcome outcome) {
    failures_.erase(id);
    if (outcome.isDeleted) {
        UnwrittenSession& data = unwritten_.at(id);
        if (auto work = owner_.isDeletedByAnother(id, data.isChanged)) {
            data.work = std::move(work);
            start(id);
        } else {
            forget(id);
        }
        return owner_.reportFailures();
    }
    if (!outcome.failures.empty()) {
        failures_[id] = platform::text::joined(outcome.failures, "; ");
    } else {
        const auto work = unwritten_.at(id).work;
        unwritten_.erase(id);
        if (work && !work->leavesClipsAlone) onDisk_.insert_or_assign(id, work->groups);
        owner_.isWritten(id, work);
    }
    if (outcome.info) owner_.adopt(std::move(*outcome.info));
    owner_.reportKeptFiles(id, outcome.kept);
    owner_.reportFailures();
}

void SessionWrites::forget(const UUID& id) {
    unwritten_.erase(id);
    failures_.erase(id);
    closed(id);
}

void SessionWrites::retryFailed() {
    std::vector<UUID> ids;
    for (const auto& [id, failure] : failures_) ids.push_back(id);
    for (const UUID& id : ids) start(id);
}

platform::Task SessionWrites::remove(UUID id, std::shared_ptr<bool> wasThere) {
    ++generation_[id]; // ends the writes that are under way
    removing_.insert(id);
    return add(removing(weak_from_this(), id, std::move(wasThere)));
}

platform::Task SessionWrites::removing(std::weak_ptr<SessionWrites> weak, UUID id,
                                       std::shared_ptr<bool> wasThere) {
    struct Outcome {
        bool wasThere = false;
        std::exception_ptr refused = nullptr;
    };
    auto self = weak.lock();
    auto deleting = platform::onQueue(self->queue_, self->mainThread_, [store = self->store_, id] {
        Outcome outcome{store.exists(id)};
        try {
            store.remove(id);
        } catch (const platform::FileError&) {
            if (!store.isDeleted(id)) outcome.refused = std::current_exception();
        }
        return outcome;
    });
    self.reset();
    const Outcome outcome = co_await deleting;
    self = weak.lock();
    if (!self) co_return;
    self->removing_.erase(self->removing_.find(id));
    if (outcome.refused) {
        if (self->find(id) != nullptr) self->start(id); // waits if another deletion is under way
        std::rethrow_exception(outcome.refused);
    }
    *wasThere = outcome.wasThere;
    self->forget(id);
    self->owner_.reportFailures();
}

/// While one of these exists, the timer begins no save.
class SessionWrites::Finishing {
  public:
    explicit Finishing(std::weak_ptr<SessionWrites> weak) : weak_(std::move(weak)) { count(1); }
    ~Finishing() { count(-1); }
    Finishing(const Finishing&) = delete;
    Finishing& operator=(const Finishing&) = delete;

  private:
    void count(int change) {
        if (const auto self = weak_.lock()) self->finishing_ += change;
    }
    const std::weak_ptr<SessionWrites> weak_;
};

platform::Task SessionWrites::finish(platform::Task other) {
    add(std::move(other));
    return finishing(weak_from_this());
}

platform::Task SessionWrites::finishing(std::weak_ptr<SessionWrites> weak) {
    const Finishing finishing(weak);
    // A save that was replaced ends early; the one that replaced it is waited for, too.
    for (;;) {
        std::optional<platform::Task> next;
        if (const auto self = weak.lock()) {
            const auto found =
                std::ranges::find_if(self->tasks_, [](const platform::Task& task) { return !task.isDone(); });
            if (found != self->tasks_.end()) next = *found;
        }
        if (!next) co_return;
        try {
            co_await *next;
        } catch (const platform::FileError&) {
            // Passed to the caller of that task.
        }
    }
}

void SessionWrites::postUnwritten() const {
    for (const auto& [id, data] : unwritten_)
        queue_.post([store = store_, writer = groupsWriter_, id = id, data = data,
                     isRemoved = removing_.contains(id)] {
            if (isRemoved && store.isDeleted(id)) return;
            SessionWriteOutcome outcome;
            writeSessionWork(store, *writer, id, data, outcome);
            writeSessionRecord(store, data, outcome);
        });
}

void SessionWrites::opened(const UUID& id, SessionStore::Groups groups) {
    if (find(id) == nullptr) onDisk_.insert_or_assign(id, groups.groups);
    queue_.post([writer = groupsWriter_, id, groups = std::move(groups)] { writer->opened(id, groups); });
}

void SessionWrites::closed(const UUID& id) {
    onDisk_.erase(id);
    queue_.post([writer = groupsWriter_, id] { writer->closed(id); });
}

} // namespace orvane
