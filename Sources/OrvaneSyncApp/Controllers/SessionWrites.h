#pragma once

#include "OrvaneSyncApp/Controllers/SessionWriting.h"
#include "Platform/Task.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace orvane {

/// What of the sessions is not on the disk yet, and the way there: one queue, the newest save of a session
/// winning. A save that fails stays, and is tried again. Interface thread. Held by a shared pointer, as its
/// writing holds it weakly.
class SessionWrites : public std::enable_shared_from_this<SessionWrites> {
  public:
    /// Whom it tells; outlives it.
    class Owner {
      public:
        virtual ~Owner() = default;
        /// Nothing of the session waits any more; `work` as it was written, null for its record alone.
        virtual void isWritten(const UUID& id, const std::shared_ptr<const SessionWork>& work) = 0;
        virtual void adopt(SessionInfo onDisk) = 0;
        virtual void reportKeptFiles(const UUID& id, const std::vector<std::string>& kept) = 0;
        /// After every attempt to write.
        virtual void reportFailures() = 0;
        /// Another process has deleted the session. The work by which it is written again; null: it stays
        /// deleted, and nothing of it waits.
        virtual std::shared_ptr<const SessionWork> isDeletedByAnother(const UUID& id, bool isChanged) = 0;
    };
    /// The queue outlives it.
    SessionWrites(Owner& owner, SessionStore store, platform::SerialQueue& queue,
                  std::shared_ptr<platform::MainThread> mainThread);

    const std::map<UUID, UnwrittenSession>& unwritten() const { return unwritten_; }
    /// What the last writing of each session failed at, of those in `unwritten`.
    const std::map<UUID, std::string>& failures() const { return failures_; }
    /// Null when nothing waits.
    const UnwrittenSession* find(const UUID& id) const;

    /// Notes a change; `info` is shown with it. A save brings `work`.
    void change(SessionInfo info, const SessionInfoChange& change, std::shared_ptr<const SessionWork> work,
                bool isChanged);
    /// Writes what waits of the session; ends when that is on the disk, a later write has taken its place, or
    /// it has failed.
    platform::Task start(const UUID& id);
    void retryFailed();
    /// Deletes the session, behind a write under way; what waits goes with it. `wasThere`: on the disk.
    /// Throws FileError when it is still there; it is kept as before then.
    platform::Task remove(UUID id, std::shared_ptr<bool> wasThere);
    /// Ends when all that waits now and `other` have ended, also what takes their place meanwhile.
    platform::Task finish(platform::Task other);
    bool isFinishing() const { return finishing_ > 0; }
    /// Posts what is not written; for the end of the program, when no task goes on.
    void postUnwritten() const;

    /// The session was opened with these clips; it is no longer open.
    void opened(const UUID& id, SessionStore::Groups groups);
    void closed(const UUID& id);

  private:
    class Finishing;
    static platform::Task write(std::weak_ptr<SessionWrites> weak, UUID id, std::uint64_t token);
    static platform::Task removing(std::weak_ptr<SessionWrites> weak, UUID id,
                                   std::shared_ptr<bool> wasThere);
    static platform::Task finishing(std::weak_ptr<SessionWrites> weak);
    bool isNewest(const UUID& id, std::uint64_t token) const;
    void finished(const UUID& id, SessionWriteOutcome outcome);
    void forget(const UUID& id);
    platform::Task add(platform::Task task);

    Owner& owner_;
    const SessionStore store_;
    platform::SerialQueue& queue_;
    const std::shared_ptr<platform::MainThread> mainThread_;
    /// Belongs to the queue.
    const std::shared_ptr<SessionGroupsWriter> groupsWriter_;
    /// The newest token of each session: an older write stops where it finds another one.
    std::map<UUID, std::uint64_t> generation_;
    std::map<UUID, UnwrittenSession> unwritten_;
    std::map<UUID, std::string> failures_;
    std::set<UUID> removing_;
    std::vector<platform::Task> tasks_;
    int finishing_ = 0; ///< tasks of `finish` under way
};

} // namespace orvane
