#pragma once

#include "OrvaneSyncCore/Services/Persistence/GroupsCoding.h"
#include "OrvaneSyncCore/Services/Persistence/SessionStore.h"

#include <map>
#include <optional>
#include <string>

namespace orvane {

/// Writes the clips of sessions so that no clips are ever lost: what this process has not read, could not
/// read or did not understand in full is kept beside the new file. What is on the disk already is not written
/// again. One thread at a time.
class SessionGroupsWriter {
  public:
    explicit SessionGroupsWriter(SessionStore store) : store_(std::move(store)) {}

    /// The session was opened: its clips are those that were read.
    void opened(const UUID& id, const SessionStore::Groups& read);
    /// Forgets a session that is no longer open.
    void closed(const UUID& id) { open_.erase(id); }

    struct Written {
        std::optional<std::string> kept{}; ///< what people should know of a file that was kept
        /// These clips are what this process read, and another one has written others since: those stand.
        bool areOutdated = false;
    };
    /// `isEmptiedByEdit`: that there are no clips is what the editor wants; else the clips that stand there
    /// are kept. Throws FileError or EncodingError; the old file then stands.
    Written write(const UUID& id, const SyncGroupList& groups, bool isEmptiedByEdit = false);

  private:
    struct Open {
        GroupsEncoder encoder;
        std::optional<SyncGroupList> onDisk;          ///< the clips of `file`; absent: it must be written
        std::optional<platform::FileAttributes> file; ///< as this process last read or wrote it
        std::optional<std::string> kept;              ///< what was kept and not reported yet
        bool isUnreadable = false;
        bool isUnderstood = false; ///< `file` says nothing that would not be written again
        bool isTidied = false;
    };
    static void keepUnknown(Open& session, const std::string& path, bool isReplacedByNone);

    const SessionStore store_;
    std::map<UUID, Open> open_;
};

} // namespace orvane
