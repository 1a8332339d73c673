#pragma once

#include "OrvaneSyncCore/Models/ScanScope.h"
#include "OrvaneSyncCore/Models/SourceCorrections.h"

#include <optional>
#include <string>

namespace orvane {

/// The entry of a session in the list of sessions.
struct SessionInfo {
    UUID id;
    std::string name{};
    Date created{};  ///< first save
    Date modified{}; ///< last save, rename or move
    int groupCount = 0;
    int lockedCount = 0;
    std::optional<std::string> folder{}; ///< name of the session's folder
    bool nameAutoDerived = true;         ///< the name is derived from the media folders

    bool operator==(const SessionInfo&) const = default;
};

/// The changes of a record by a save, a rename or a move. Members that are absent stay as they are on the
/// disk, where another process may have written them.
struct SessionInfoChange {
    struct Counts {
        int groupCount = 0;
        int lockedCount = 0;
    };
    std::optional<std::string> name{}; ///< given by the user
    /// Used until the user has given a name.
    std::optional<std::string> derivedName{};
    std::optional<bool> nameAutoDerived{};
    std::optional<std::optional<std::string>> folder{};
    std::optional<Counts> counts{};
    std::optional<Date> modified{};

    /// Adds a later change to this one.
    void add(const SessionInfoChange& later);
    void apply(SessionInfo& info) const;
    /// The decisions of the user, without what is derived from the clips; absent if there are none.
    std::optional<SessionInfoChange> decisions() const;
};

/// The media folders of a session, and how they were scanned.
struct SessionFolders {
    std::optional<FileURL> videoFolder;
    std::optional<FileURL> audioFolder;
    /// Bytes with which another platform finds a folder again; never written here.
    std::optional<std::string> videoBookmark;
    std::optional<std::string> audioBookmark;
    ScanScope scope{};
    SourceCorrections corrections{};
    /// The corrections with which the clips were matched, if they differ from `corrections`.
    std::optional<SourceCorrections> matchedBy{};

    bool operator==(const SessionFolders&) const = default;
};

/// Some folders of a session that one process has chosen; the others stay as they are on the disk.
struct SessionFoldersChange {
    SessionFolders folders{};
    bool hasVideo = false;
    bool hasAudio = false;
    bool hasScope = false;
    bool hasCorrections = false; ///< or `matchedBy` has changed

    bool isEmpty() const { return !hasVideo && !hasAudio && !hasScope && !hasCorrections; }
    void apply(SessionFolders& onDisk) const;
};

/// The name of a session without a given name: from its media folders, otherwise from its day.
std::string defaultName(const SessionFolders& folders, Date day);

/// A named folder of sessions, and the settings that are applied to the work in it.
struct FolderInfo {
    std::string name; ///< also identifies the folder
    std::optional<std::string> lockitProjectID{};
    std::optional<std::string> metadataPrefix{};
    std::optional<std::string> activePresetName{};
    std::optional<std::string> activeSettingsSnapshot{}; ///< from `PresetManager::snapshotData`

    bool operator==(const FolderInfo&) const = default;
};

JSON toJSON(const SessionInfo& info);
JSON toJSON(const SessionFolders& folders);
JSON toJSON(const FolderInfo& folder);
template <>
SessionInfo fromJSON<SessionInfo>(const JSON& json);
template <>
SessionFolders fromJSON<SessionFolders>(const JSON& json);
template <>
FolderInfo fromJSON<FolderInfo>(const JSON& json);

} // namespace orvane
