#pragma once

#include "OrvaneSyncCore/Models/ScanScope.h"
#include "OrvaneSyncCore/Models/SourceCorrections.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"
#include "OrvaneSyncCore/Models/WildTrack.h"
#include "Platform/JSONParts.h"

#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace orvane {

/// What a project file stores of a clip: the path of its video and the editor's decisions. `id`, `audioPaths`
/// and the fields from `matchStatusRaw` on describe the state at the time of saving; of a clip that the
/// editor settled by hand they say with which recording.
struct PersistedGroup {
    UUID id;
    FileURL videoPath; ///< the key by which a later scan finds the clip
    std::vector<FileURL> audioPaths;
    SyncGroup decisions;                     ///< only the fields that are `KeptIn::projects` are filled
    std::string matchStatusRaw;              ///< such as "matched" or "ambiguous:3"
    std::optional<double> syncOffsetSeconds; ///< of the first match

    explicit PersistedGroup(const SyncGroup& group);
    PersistedGroup(UUID identity, FileURL video);
    /// Copies the editor's decisions to a clip of a new scan, which keeps its own `id`.
    void applyTo(SyncGroup& group) const;
};

/// What a project file stores of a wild track that the editor named or approved.
struct PersistedWildTrack {
    FileURL audioPath; ///< the key by which a later scan finds the track
    std::string customName;
    bool isApproved = false;
};
/// The entries of the tracks that were named or approved.
std::vector<PersistedWildTrack> decidedWildTracks(const std::vector<WildTrack>& tracks);

/// A project file: the folders and the editor's decisions, but nothing that a scan finds again.
struct OrvaneSyncProject {
    static constexpr int currentVersion = 1;

    int version = currentVersion;
    Date savedAt;
    std::optional<FileURL> videoFolderPath;
    std::optional<FileURL> audioFolderPath;
    ScanScope scanScope;
    SourceCorrections sourceCorrections;
    std::optional<FileURL> aleFilePath;
    std::vector<PersistedGroup> groups; ///< one for each clip, in the order of the list
    std::vector<PersistedWildTrack> wildTracks;
    /// Bytes with which another platform finds a folder again; never written here.
    std::optional<std::string> videoFolderBookmark;
    std::optional<std::string> audioFolderBookmark;
};

JSON toJSON(const PersistedGroup& group);
JSON toJSON(const PersistedWildTrack& track);
JSON toJSON(const OrvaneSyncProject& project);
template <>
PersistedGroup fromJSON<PersistedGroup>(const JSON& json);
template <>
PersistedWildTrack fromJSON<PersistedWildTrack>(const JSON& json);
template <>
OrvaneSyncProject fromJSON<OrvaneSyncProject>(const JSON& json);
/// The same from the members of the text of a project. Throws JSONError and Stopped too.
OrvaneSyncProject projectFromParts(const platform::JSONMemberParts& members, const std::stop_token& stop);

/// Bytes that a record stores as base64 text.
std::optional<std::string> optionalBytes(const JSON& object, std::string_view key);
/// The path of a file that a record stores as text.
std::optional<FileURL> optionalPath(const JSON& object, std::string_view key);

} // namespace orvane
