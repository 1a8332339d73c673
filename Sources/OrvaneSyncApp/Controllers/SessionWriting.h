#pragma once

#include "OrvaneSyncCore/Services/Persistence/SessionGroupsWriter.h"
#include "OrvaneSyncCore/Services/Persistence/SessionStore.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

/// The files of a session, as they are opened and as one save writes them; on the queue of the sessions.
namespace orvane {

/// The clips of a save.
struct SessionWork {
    SyncGroupList groups;
    bool isEmptiedByEdit = false;
    SessionFoldersChange folders;
    WildTracksChange wildTracks;
    bool leavesClipsAlone = false; ///< those on the disk stay
};

/// What of a session is not on the disk yet.
struct UnwrittenSession {
    std::shared_ptr<const SessionWork> work; ///< null: its record alone
    SessionInfo info;                        ///< as it is shown, with the change
    SessionInfoChange change;
    /// Somebody has changed or decided something; else a session that another process deletes stays deleted.
    bool isChanged = false;
};

/// What came of writing it.
struct SessionWriteOutcome {
    std::vector<std::string> failures{};     ///< the file, and what it failed at
    std::vector<std::string> kept{};         ///< files that lie beside the new ones
    bool isDeleted = false;                  ///< by another process; nothing was written
    bool areClipsOutdated = false;           ///< another process has changed them
    std::optional<SessionFolders> folders{}; ///< as they now are on the disk, where they can be read
    std::optional<SessionInfo> info{};       ///< as it now is on the disk
};

/// What the disk says of a session.
struct StoredSession {
    SessionStore::Groups groups;
    SessionStore::Stored<SessionFolders> folders;
    SessionStore::Stored<std::vector<WildTrack>> wildTracks;
    std::optional<std::string> infoProblem;                       ///< why its record can't be read
    SessionStore::Stored<std::vector<FolderInfo>> sessionFolders; ///< those of all sessions
};
/// Absent where there is no such session.
std::optional<StoredSession> readStoredSession(const SessionStore& store, const UUID& id);

/// A failure of one file does not keep the others from being written, and none throws. First everything but
/// the record, then the record, by which the session is listed: it is never older than the clips it was
/// written with.
void writeSessionWork(const SessionStore& store, SessionGroupsWriter& writer, const UUID& id,
                      const UnwrittenSession& data, SessionWriteOutcome& outcome);
void writeSessionRecord(const SessionStore& store, const UnwrittenSession& data,
                        SessionWriteOutcome& outcome);

} // namespace orvane
