#pragma once

#include "OrvaneSyncCore/Models/ScanScope.h"
#include "OrvaneSyncCore/Models/SourceCorrections.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"

#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// What a project file holds of one clip: where its video lies and what the editor decided. The fields from
/// `matchStatusRaw` on, `id` and `audioPaths` tell how it was when it was saved; of a clip that was settled
/// by hand they say by which recording.
struct PersistedGroup {
    UUID id;
    FileURL videoPath; ///< the key by which a clip of a later scan is found
    std::vector<FileURL> audioPaths;
    SyncGroup decisions;                     ///< nothing of it but the fields that are `KeptIn::projects`
    std::string matchStatusRaw;              ///< such as "matched" or "ambiguous:3"
    std::optional<double> syncOffsetSeconds; ///< of the first match

    explicit PersistedGroup(const SyncGroup& group);
    PersistedGroup(UUID identity, FileURL video);
    /// Lays the editor's decisions over a clip of a new scan, which keeps its own `id`.
    void applyTo(SyncGroup& group) const;
};

/// A project file: where the folders were and the editor's decisions, not what a scan finds out again.
struct OrvaneSyncProject {
    static constexpr int currentVersion = 1;

    int version = currentVersion;
    Date savedAt;
    std::optional<FileURL> videoFolderPath;
    std::optional<FileURL> audioFolderPath;
    ScanScope scanScope;
    SourceCorrections sourceCorrections;
    std::optional<FileURL> aleFilePath;
    std::vector<PersistedGroup> groups; ///< one a clip, in the order of the list
    /// Bytes by which another platform finds a folder again; none are made here.
    std::optional<std::string> videoFolderBookmark;
    std::optional<std::string> audioFolderBookmark;
};

JSON toJSON(const PersistedGroup& group);
JSON toJSON(const OrvaneSyncProject& project);
template <>
PersistedGroup fromJSON<PersistedGroup>(const JSON& json);
template <>
OrvaneSyncProject fromJSON<OrvaneSyncProject>(const JSON& json);

/// Bytes that a record holds as base64 text.
std::optional<std::string> optionalBytes(const JSON& object, std::string_view key);
/// A file's path as a record holds it, as text.
std::optional<FileURL> optionalPath(const JSON& object, std::string_view key);

} // namespace orvane
