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

/// The files of all sessions: below one directory, a folder for each session, named by its id, and a list of
/// the folders that group them. Each file is written whole or not at all, so that a process that is killed
/// leaves a session that opens; several processes may share the directory. Holds no state; any thread.
class SessionStore {
  public:
    explicit SessionStore(std::string directory) : directory_(std::move(directory)) {}

    std::string folderOf(const UUID& id) const;
    std::string groupsPath(const UUID& id) const;
    bool exists(const UUID& id) const;
    /// Nothing is there any more; false while the directory of all sessions can't be reached.
    bool isDeleted(const UUID& id) const;
    /// Throws FileError.
    void create(const UUID& id) const;
    /// Renamed first, then removed file by file: a process that is killed leaves the whole session or none.
    /// Throws FileError when the session is still there.
    void remove(const UUID& id) const;

    /// Records as they were read, with what their files were then.
    using KnownRecords = std::unordered_map<UUID, std::pair<platform::FileAttributes, SessionInfo>>;
    /// The sessions whose records can be read, most recently modified first. `unreadable` is called
    /// with a sentence for people about each of those whose records can't. A record in `known` whose file is
    /// unchanged is not read again.
    std::vector<SessionInfo> list(const std::function<void(const std::string& problem)>& unreadable = {},
                                  KnownRecords* known = nullptr) const;

    template <class Record>
    struct Stored {
        std::optional<Record> record{};
        /// Why a record that is there can't be read, for people.
        std::optional<std::string> problem{};
    };
    template <class Record>
    struct Changed {
        Record record; ///< as it now is on the disk
        /// For people: which file was kept beside it, as it can't be read or says more than is understood.
        std::optional<std::string> kept{};
    };
    Stored<SessionInfo> readInfo(const UUID& id) const;
    /// Changes the record as it now is on the disk, or, where there is none, `known`. Throws FileError.
    Changed<SessionInfo> changeInfo(const SessionInfo& known, const SessionInfoChange& change) const;

    struct Groups {
        SyncGroupList groups;
        /// The file as it was found; absent when there is none.
        std::optional<platform::FileAttributes> file;
        /// Why the clips that should be here can't be read, for people. There are none then.
        std::optional<std::string> problem;
    };
    Groups readGroups(const UUID& id) const;

    Stored<SessionFolders> readFolders(const UUID& id) const;
    /// As above; where there are none that can be read, all of `change.folders`. Throws FileError.
    Changed<SessionFolders> changeFolders(const UUID& id, const SessionFoldersChange& change) const;

    bool hasWildTracks(const UUID& id) const { return platform::files::exists(wildTracksPath(id)); }
    Stored<std::vector<WildTrack>> readWildTracks(const UUID& id) const;
    /// As above; without wild tracks no file is made. Throws FileError.
    Changed<std::vector<WildTrack>> changeWildTracks(const UUID& id, const WildTracksChange& change,
                                                     bool areOtherClipsOnDisk) const;

    using FolderChange = std::function<void(std::vector<FolderInfo>&)>;
    /// Sorted by name. Takes over the older form of the list where only that is there.
    Stored<std::vector<FolderInfo>> readFolderInfos() const;
    /// As above. Throws FileError.
    Changed<std::vector<FolderInfo>> changeFolderInfos(const std::vector<FolderInfo>& known,
                                                       const FolderChange& change) const;

  private:
    std::string infoPath(const UUID& id) const { return folderOf(id) + "/session.json"; }
    std::string foldersPath(const UUID& id) const { return folderOf(id) + "/folders.json"; }
    std::string wildTracksPath(const UUID& id) const { return folderOf(id) + "/wild_tracks.json"; }
    std::string folderInfosPath() const { return directory_ + "/folders.json"; }

    std::string directory_;
};

/// Plain order of names; the first of several with one name counts.
void sortByName(std::vector<FolderInfo>& folders);

} // namespace orvane
