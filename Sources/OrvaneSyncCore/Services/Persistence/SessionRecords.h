#pragma once

#include "OrvaneSyncCore/Models/JSONCoding.h"

#include <optional>
#include <string>

namespace orvane {

/// What the list of sessions shows of one.
struct SessionInfo {
    UUID id;
    std::string name;
    Date created;  ///< first save
    Date modified; ///< last save, rename or move
    int groupCount = 0;
    int lockedCount = 0;
    std::optional<std::string> folder; ///< name of the folder it lies in
    bool nameAutoDerived = true;       ///< the name follows the media folders
};

/// Where the media of a session lay.
struct SessionFolders {
    std::optional<FileURL> videoFolder;
    std::optional<FileURL> audioFolder;
    /// Bytes by which another platform finds a folder again; none are made here.
    std::optional<std::string> videoBookmark;
    std::optional<std::string> audioBookmark;
};

/// A named folder of sessions and the settings that follow the work into it.
struct FolderInfo {
    std::string name; ///< its identity
    std::optional<std::string> lockitProjectID{};
    std::optional<std::string> metadataPrefix{};
    std::optional<std::string> activePresetName{};
    std::optional<std::string> activeSettingsSnapshot{}; ///< bytes of `PresetManager::snapshotData`
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
