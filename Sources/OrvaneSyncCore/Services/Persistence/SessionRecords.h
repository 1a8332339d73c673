#pragma once

#include "OrvaneSyncCore/Models/ScanScope.h"
#include "OrvaneSyncCore/Models/SourceCorrections.h"

#include <optional>
#include <string>

namespace orvane {

/// What the list of sessions shows of one.
struct SessionInfo {
    UUID id;
    std::string name{};
    Date created{};  ///< first save
    Date modified{}; ///< last save, rename or move
    int groupCount = 0;
    int lockedCount = 0;
    std::optional<std::string> folder{}; ///< name of the folder it lies in
    bool nameAutoDerived = true;         ///< the name follows the media folders

    bool operator==(const SessionInfo&) const = default;
};

/// What a save, a rename or a move changes of a record. What it does not name stays as it is on the disk,
/// where another process may have written it.
struct SessionInfoChange {
    struct Counts {
        int groupCount = 0;
        int lockedCount = 0;
    };
    std::optional<std::string> name{}; ///< that somebody gave
    /// The name for as long as nobody has given one for good.
    std::optional<std::string> derivedName{};
    std::optional<bool> nameAutoDerived{};
    std::optional<std::optional<std::string>> folder{};
    std::optional<Counts> counts{};
    std::optional<Date> modified{};

    /// This change and then the later one.
    void add(const SessionInfoChange& later);
    void apply(SessionInfo& info) const;
    /// What somebody decided, without what follows from the clips; nothing when nobody has decided anything.
    std::optional<SessionInfoChange> decisions() const;
};

/// Where the media of a session lay, and how it was read.
struct SessionFolders {
    std::optional<FileURL> videoFolder;
    std::optional<FileURL> audioFolder;
    /// Bytes by which another platform finds a folder again; none are made here.
    std::optional<std::string> videoBookmark;
    std::optional<std::string> audioBookmark;
    ScanScope scope{};
    SourceCorrections corrections{};
    /// By what the clips were matched, where these are others.
    std::optional<SourceCorrections> matchedBy{};

    bool operator==(const SessionFolders&) const = default;
};

/// The folders of a session of which one process has chosen some; the others stay as they are on the disk.
struct SessionFoldersChange {
    SessionFolders folders{};
    bool hasVideo = false;
    bool hasAudio = false;
    bool hasScope = false;
    bool hasCorrections = false; ///< or the clips were matched by others

    bool isEmpty() const { return !hasVideo && !hasAudio && !hasScope && !hasCorrections; }
    void apply(SessionFolders& onDisk) const;
};

/// The name of a session that nobody has named, after its media folders or else its day.
std::string defaultName(const SessionFolders& folders, Date day);

/// A named folder of sessions and the settings that follow the work into it.
struct FolderInfo {
    std::string name; ///< its identity
    std::optional<std::string> lockitProjectID{};
    std::optional<std::string> metadataPrefix{};
    std::optional<std::string> activePresetName{};
    std::optional<std::string> activeSettingsSnapshot{}; ///< bytes of `PresetManager::snapshotData`

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
