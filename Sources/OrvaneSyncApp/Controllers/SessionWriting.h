#pragma once

#include "OrvaneSyncCore/Services/Persistence/SessionGroupsWriter.h"
#include "OrvaneSyncCore/Services/Persistence/SessionStore.h"

#include <memory>
#include <optional>
#include <stop_token>
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
    bool leavesClipsAlone = false; ///< the clips on the disk are not changed

    /// Marks everything as changed, for a disk that may have none of it, or an older state.
    void changesAll();
};

/// The changes of a session that are not written yet.
struct UnwrittenSession {
    std::shared_ptr<const SessionWork> work; ///< null: only its record
    SessionInfo info;                        ///< as shown, with the change
    SessionInfoChange change;
    /// The user has changed or decided something; otherwise a session that another process deletes stays
    /// deleted.
    bool isChanged = false;
};

/// The result of writing a session.
struct SessionWriteOutcome {
    std::vector<std::string> failures{};     ///< the file, and why it failed
    std::vector<std::string> kept{};         ///< files that were kept beside the new ones
    bool isDeleted = false;                  ///< by another process; nothing was written
    bool areClipsOutdated = false;           ///< another process has changed them
    std::optional<SessionFolders> folders{}; ///< as they are on the disk after the writing, if readable
    std::optional<SessionInfo> info{};       ///< as it is on the disk after the writing
};

/// A session as it is on the disk.
struct StoredSession {
    SessionStore::Groups groups;
    SessionStore::Stored<SessionFolders> folders;
    SessionStore::Stored<std::vector<WildTrack>> wildTracks;
    SessionStore::Stored<SessionInfo> info;
    SessionStore::Stored<std::vector<FolderInfo>> sessionFolders; ///< those of all sessions
};
/// Absent if there is no such session. Throws Stopped.
std::optional<StoredSession> readStoredSession(const SessionStore& store, const UUID& id,
                                               const std::stop_token& stop);

/// A failure of one file does not prevent writing the others, and none throws. The record, by which the
/// session is listed, is written last, so it is never older than the clips written with it.
void writeSessionWork(const SessionStore& store, SessionGroupsWriter& writer, const UUID& id,
                      const UnwrittenSession& data, SessionWriteOutcome& outcome);
void writeSessionRecord(const SessionStore& store, const UnwrittenSession& data,
                        SessionWriteOutcome& outcome);

} // namespace orvane
