#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Persistence/SessionRecords.h"
#include "Platform/Files.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// The files of all sessions: below one directory, a folder for each session, named by its id, and a list of
/// the folders that group them. Each file is written whole or not at all, so that a process that is killed
/// leaves a session that opens; several processes may share the directory. Holds no state; any thread.
class SessionStore {
  public:
    explicit SessionStore(std::string directory) : directory_(std::move(directory)) {}

    std::string folderOf(const UUID& id) const;
    std::string groupsPath(const UUID& id) const;
    bool exists(const UUID& id) const;
    /// Throws FileError.
    void create(const UUID& id) const;
    /// First out of sight, then in pieces: a process that is killed leaves the whole session or none. Throws
    /// FileError.
    void remove(const UUID& id) const;

    /// The sessions that can be read, most recently modified first.
    std::vector<SessionInfo> list() const;
    /// A record that is there and can't be read is kept beside the new one. Throws FileError.
    void writeInfo(const SessionInfo& info) const;

    struct Groups {
        SyncGroupList groups;
        /// The file as it was found; absent when there is none.
        std::optional<platform::FileAttributes> file;
        /// Why the clips that should be here can't be read, for people. There are none then.
        std::optional<std::string> problem;
    };
    Groups readGroups(const UUID& id) const;

    /// Nothing when they can't be read.
    std::optional<SessionFolders> readFolders(const UUID& id) const;
    /// As `writeInfo`.
    void writeFolders(const UUID& id, const SessionFolders& folders) const;

    using FolderChange = std::function<void(std::vector<FolderInfo>&)>;
    /// Sorted by name. Takes over the older form of the list where only that is there.
    std::vector<FolderInfo> readFolderInfos() const;
    /// Changes the list as it now is on the disk, where another process may have written, and returns it. A
    /// list that can't be read is kept beside the new one, which then starts from `known`. Throws FileError.
    std::vector<FolderInfo> changeFolderInfos(const std::vector<FolderInfo>& known,
                                              const FolderChange& change) const;

  private:
    std::string folderInfosPath() const { return directory_ + "/folders.json"; }

    std::string directory_;
};

/// Plain order of names; the first of several with one name counts.
void sortByName(std::vector<FolderInfo>& folders);

} // namespace orvane
