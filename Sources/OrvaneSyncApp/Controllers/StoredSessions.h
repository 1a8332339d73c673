#pragma once

#include "OrvaneSyncApp/Controllers/SessionWriting.h"
#include "Platform/Task.h"

#include <memory>
#include <optional>
#include <vector>

namespace orvane {

/// What the disk says of all sessions.
struct StoredLists {
    std::vector<SessionInfo> sessions;
    SessionStore::Stored<std::vector<FolderInfo>> folders;
};

/// Reads the sessions on their queue, which outlives it, behind what is written there. Interface thread.
class StoredSessions {
  public:
    StoredSessions(SessionStore store, platform::SerialQueue& queue,
                   std::shared_ptr<platform::MainThread> mainThread);

    platform::Task readLists(std::shared_ptr<StoredLists> lists) const;
    /// Leaves nothing where there is no such session. One that is stopped reads to its end.
    platform::Task read(const UUID& id, std::shared_ptr<std::optional<StoredSession>> session) const;
    /// Leaves the first of the candidates whose media lay in just these folders; absent where none did.
    platform::Task find(std::vector<UUID> candidates, const std::vector<FileURL>& folders,
                        std::shared_ptr<std::optional<UUID>> found) const;

  private:
    const SessionStore store_;
    platform::SerialQueue& queue_;
    const std::shared_ptr<platform::MainThread> mainThread_;
    const std::shared_ptr<SessionStore::KnownRecords> knownRecords_; ///< belong to the queue
};

} // namespace orvane
