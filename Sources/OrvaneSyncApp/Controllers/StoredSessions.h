#pragma once

#include "OrvaneSyncApp/Controllers/SessionWriting.h"
#include "Platform/Task.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// The lists of all sessions as they are on the disk.
struct StoredLists {
    std::vector<SessionInfo> sessions;
    std::vector<std::string> unreadable{}; ///< a message for each session that is missing in `sessions`
    SessionStore::Stored<std::vector<FolderInfo>> folders;
};

/// Reads the sessions on their queue, which outlives this object, after earlier writes. Interface thread.
class StoredSessions {
  public:
    StoredSessions(SessionStore store, platform::SerialQueue& queue,
                   std::shared_ptr<platform::MainThread> mainThread);

    platform::Task readLists(std::shared_ptr<StoredLists> lists) const;
    /// Leaves `session` empty if there is no such session.
    platform::Task read(const UUID& id, std::shared_ptr<std::optional<StoredSession>> session) const;
    /// The same for a session whose folder is in the folder `elsewhere`; `sessionFolders` are the own ones.
    platform::Task readCopy(const UUID& id, const std::string& elsewhere,
                            std::shared_ptr<std::optional<StoredSession>> session) const;
    /// Writes the first of the candidates whose media were in exactly these folders; absent if there is none.
    platform::Task find(std::vector<UUID> candidates, const std::vector<FileURL>& folders,
                        std::shared_ptr<std::optional<UUID>> found) const;

  private:
    const SessionStore store_;
    platform::SerialQueue& queue_;
    const std::shared_ptr<platform::MainThread> mainThread_;
    const std::shared_ptr<SessionStore::KnownRecords> knownRecords_; ///< used on the queue only
};

} // namespace orvane
