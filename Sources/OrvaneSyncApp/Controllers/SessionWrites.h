#pragma once

#include "OrvaneSyncApp/Controllers/SessionWriting.h"
#include "Platform/Task.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace orvane {

/// The changes of the sessions that are not written yet, and their writing: one queue; the newest save of a
/// session replaces earlier ones. A save that fails is kept and tried again. Interface thread. Held by a
/// shared pointer, because its writing holds a weak one.
class SessionWrites : public std::enable_shared_from_this<SessionWrites> {
  public:
    /// Is notified; outlives this object.
    class Owner {
      public:
        virtual ~Owner() = default;
        /// Nothing of the session waits to be written; `work` as it was written, null if only its record was.
        virtual void isWritten(const UUID& id, const std::shared_ptr<const SessionWork>& work) = 0;
        virtual void adopt(SessionInfo onDisk) = 0;
        virtual void reportKeptFiles(const UUID& id, const std::vector<std::string>& kept) = 0;
        /// Called after every attempt to write.
        virtual void reportFailures() = 0;
        /// Another process has deleted the session. Returns the work with which it is written again; null: it
        /// stays deleted, and its unwritten changes are discarded.
        virtual std::shared_ptr<const SessionWork> isDeletedByAnother(const UUID& id, bool isChanged) = 0;
    };
    /// The queue outlives this object.
    SessionWrites(Owner& owner, SessionStore store, platform::SerialQueue& queue,
                  std::shared_ptr<platform::MainThread> mainThread);

    const std::map<UUID, UnwrittenSession>& unwritten() const { return unwritten_; }
    /// Why the last writing of each session failed, for those in `unwritten`.
    const std::map<UUID, std::string>& failures() const { return failures_; }
    /// Null if nothing waits.
    const UnwrittenSession* find(const UUID& id) const;
    /// The number of the session's clips that are new or changed since the last successful write.
    std::size_t unwrittenClips(const UUID& id) const;
    /// Writes the sessions whose clips are not written yet into another folder. Does not use the queue of the
    /// other writes, which may be waiting for its disk. The task throws FileError.
    platform::Task writeCopies(std::string folder) const;

    /// Notes a change; `info` is shown with it. For a save `work` is set.
    void change(SessionInfo info, const SessionInfoChange& change, std::shared_ptr<const SessionWork> work,
                bool isChanged);
    /// Writes the waiting changes of the session; ends when they are written, a later write has replaced this
    /// one, or it has failed.
    platform::Task start(const UUID& id);
    void retryFailed();
    /// Deletes the session after a running write; its waiting changes are discarded. `wasThere`: whether it
    /// was on the disk. Throws FileError if it is still there; it is kept then.
    platform::Task remove(UUID id, std::shared_ptr<bool> wasThere);
    /// Ends when all waiting writes and `other` have ended, and the writes that replace them meanwhile.
    platform::Task finish(platform::Task other);
    bool isFinishing() const { return finishing_ > 0; }
    /// Posts the unwritten changes to the queue; for the end of the program, when tasks do not continue.
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
    static platform::Task copying(std::weak_ptr<platform::MainThread> mainThread, std::string folder,
                                  std::vector<std::pair<UUID, UnwrittenSession>> sessions);
    void finished(const UUID& id, SessionWriteOutcome outcome);
    void forget(const UUID& id);
    platform::Task add(platform::Task task);

    Owner& owner_;
    const SessionStore store_;
    platform::SerialQueue& queue_;
    const std::shared_ptr<platform::MainThread> mainThread_;
    /// Used on the queue only.
    const std::shared_ptr<SessionGroupsWriter> groupsWriter_;
    /// The newest token of each session: an older write stops if its token is not the newest.
    std::map<UUID, std::uint64_t> generation_;
    std::map<UUID, UnwrittenSession> unwritten_;
    std::map<UUID, std::string> failures_;
    std::map<UUID, SyncGroupList> onDisk_; ///< last written clips of the sessions that are open or waiting
    std::multiset<UUID> removing_;         ///< once for each deletion under way
    std::vector<platform::Task> tasks_;
    int finishing_ = 0; ///< running tasks of `finish`
};

} // namespace orvane
