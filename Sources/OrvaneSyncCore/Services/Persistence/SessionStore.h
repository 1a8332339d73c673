#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Persistence/SessionRecords.h"
#include "OrvaneSyncCore/Services/Persistence/SessionWildTracks.h"
#include "Platform/Files.h"

#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace orvane {

/// The files of all sessions: one directory with a folder for each session, named by its id, and a list of
/// the folders that group sessions. Each file is written completely or not at all, so that a session can be
/// opened even if a process was killed. Several processes may share the directory. Has no state; any thread.
class SessionStore {
  public:
    explicit SessionStore(std::string directory) : directory_(std::move(directory)) {}

    std::string folderOf(const UUID& id) const;
    std::string groupsPath(const UUID& id) const;
    bool exists(const UUID& id) const;
    /// Whether the session's folder does not exist; false if the directory of all sessions cannot be reached.
    bool isDeleted(const UUID& id) const;
    /// Throws FileError.
    void create(const UUID& id) const;
    /// Renames the folder and then removes it file by file: if the process is killed, the whole session
    /// exists or none of it. Throws FileError if the session still exists.
    void remove(const UUID& id) const;

    /// Records that were read, with the attributes of their files at that time.
    using KnownRecords = std::unordered_map<UUID, std::pair<platform::FileAttributes, SessionInfo>>;
    /// The sessions whose records can be read, most recently modified first. `unreadable` is called with a
    /// message for each record that cannot be read. A record in `known` whose file is unchanged is not read
    /// again.
    std::vector<SessionInfo> list(const std::function<void(const std::string& problem)>& unreadable = {},
                                  KnownRecords* known = nullptr) const;

    template <class Record>
    struct Stored {
        std::optional<Record> record{};
        /// Why an existing record cannot be read, for display.
        std::optional<std::string> problem{};
    };
    template <class Record>
    struct Changed {
        Record record; ///< as it is on the disk afterwards
        /// A message: which file was kept beside it, because it cannot be read or has content that is not
        /// understood.
        std::optional<std::string> kept{};
    };
    Stored<SessionInfo> readInfo(const UUID& id) const;
    /// Changes the record on the disk, or `known` if there is none. Throws FileError.
    Changed<SessionInfo> changeInfo(const SessionInfo& known, const SessionInfoChange& change) const;

    struct Groups {
        SyncGroupList groups;
        /// The file's attributes before it was read; absent if there is no file.
        std::optional<platform::FileAttributes> file;
        /// Why existing clips cannot be read, for display; then `groups` is empty.
        std::optional<std::string> problem;
    };
    /// Throws Stopped.
    Groups readGroups(const UUID& id, const std::stop_token& stop = {}) const;

    Stored<SessionFolders> readFolders(const UUID& id) const;
    /// The same for the folders; all of `change.folders` if the disk has none that can be read. Throws
    /// FileError.
    Changed<SessionFolders> changeFolders(const UUID& id, const SessionFoldersChange& change) const;

    bool hasWildTracks(const UUID& id) const { return platform::files::exists(wildTracksPath(id)); }
    /// Throws Stopped.
    Stored<std::vector<WildTrack>> readWildTracks(const UUID& id, const std::stop_token& stop = {}) const;
    /// The same for the wild tracks; no file is created if there are none. Throws FileError.
    Changed<std::vector<WildTrack>> changeWildTracks(const UUID& id, const WildTracksChange& change,
                                                     bool areOtherClipsOnDisk) const;

    using FolderChange = std::function<void(std::vector<FolderInfo>&)>;
    /// Sorted by name. If only the older form of the list exists, it is converted.
    Stored<std::vector<FolderInfo>> readFolderInfos() const;
    /// The same for the list of folders. Throws FileError.
    Changed<std::vector<FolderInfo>> changeFolderInfos(const std::vector<FolderInfo>& known,
                                                       const FolderChange& change) const;

  private:
    std::string infoPath(const UUID& id) const { return folderOf(id) + "/session.json"; }
    std::string foldersPath(const UUID& id) const { return folderOf(id) + "/folders.json"; }
    std::string wildTracksPath(const UUID& id) const { return folderOf(id) + "/wild_tracks.json"; }
    std::string folderInfosPath() const { return directory_ + "/folders.json"; }

    std::string directory_;
};

/// Sorted by the bytes of the name; equal names keep their order.
void sortByName(std::vector<FolderInfo>& folders);

} // namespace orvane
