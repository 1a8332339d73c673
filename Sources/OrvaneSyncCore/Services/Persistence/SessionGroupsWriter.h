#pragma once

#include "OrvaneSyncCore/Services/Persistence/GroupsCoding.h"
#include "OrvaneSyncCore/Services/Persistence/SessionStore.h"

#include <map>
#include <optional>
#include <string>

namespace orvane {

/// Writes the clips of sessions without ever losing clips: a file with clips that this process has not read,
/// could not read or did not understand completely is kept beside the new one. A file that has the same clips
/// already is not written again. One thread at a time.
class SessionGroupsWriter {
  public:
    explicit SessionGroupsWriter(SessionStore store) : store_(std::move(store)) {}

    /// Call after a session was opened: `read` are the clips that were read.
    void opened(const UUID& id, const SessionStore::Groups& read);
    /// Call when a session is closed.
    void closed(const UUID& id) { open_.erase(id); }

    struct Written {
        std::optional<std::string> kept{}; ///< a message about a file that was kept
        /// Nothing was written: the clips are those that this process read, and another process has written
        /// others since.
        bool areOutdated = false;
    };
    /// `isEmptiedByEdit`: the editor removed all clips; otherwise, if there are no clips, the clips in the
    /// file are kept. Throws FileError or EncodingError; then the old file is unchanged.
    Written write(const UUID& id, const SyncGroupList& groups, bool isEmptiedByEdit = false);

  private:
    struct Open {
        GroupsEncoder encoder;
        std::optional<SyncGroupList> onDisk;          ///< the clips in `file`; absent: it must be written
        std::optional<platform::FileAttributes> file; ///< as this process last read or wrote it
        std::optional<std::string> kept;              ///< a kept file that was not reported yet
        bool isUnreadable = false;
        bool isUnderstood = false; ///< writing `file` again would lose nothing
        bool isTidied = false;
    };
    static void keepUnknown(Open& session, const std::string& path, bool isReplacedByNone);

    const SessionStore store_;
    std::map<UUID, Open> open_;
};

} // namespace orvane
