#include "OrvaneSyncCore/Services/Persistence/SessionRecords.h"

#include "OrvaneSyncCore/Models/OrvaneSyncProject.h"
#include "OrvaneSyncCore/Utilities/Base64.h"

#include <array>
#include <cstdio>

namespace orvane {

namespace {

void setBytes(JSON& json, std::string_view key, const std::optional<std::string>& bytes) {
    if (bytes) json.set(key, base64::encoded(*bytes));
}

void setPath(JSON& json, std::string_view key, const std::optional<FileURL>& path) {
    if (path) json.set(key, path->pathText());
}

template <class T>
void replace(std::optional<T>& value, const std::optional<T>& later) {
    if (later) value = later;
}

} // namespace

void SessionInfoChange::add(const SessionInfoChange& later) {
    if (later.name) derivedName.reset();
    replace(name, later.name);
    replace(derivedName, later.derivedName);
    replace(nameAutoDerived, later.nameAutoDerived);
    replace(folder, later.folder);
    replace(counts, later.counts);
    replace(modified, later.modified);
}

void SessionInfoChange::apply(SessionInfo& info) const {
    if (nameAutoDerived) info.nameAutoDerived = *nameAutoDerived;
    if (name) info.name = *name;
    if (derivedName && info.nameAutoDerived) info.name = *derivedName;
    if (folder) info.folder = *folder;
    if (counts) {
        info.groupCount = counts->groupCount;
        info.lockedCount = counts->lockedCount;
    }
    if (modified) info.modified = *modified;
}

std::optional<SessionInfoChange> SessionInfoChange::decisions() const {
    if (!name && !nameAutoDerived && !folder) return std::nullopt;
    return SessionInfoChange{
        .name = name, .nameAutoDerived = nameAutoDerived, .folder = folder, .modified = modified};
}

void SessionFoldersChange::apply(SessionFolders& onDisk) const {
    if (hasVideo) {
        onDisk.videoFolder = folders.videoFolder;
        onDisk.videoBookmark = folders.videoBookmark;
    }
    if (hasAudio) {
        onDisk.audioFolder = folders.audioFolder;
        onDisk.audioBookmark = folders.audioBookmark;
    }
    if (hasScope) onDisk.scope = folders.scope;
    if (hasCorrections) {
        onDisk.corrections = folders.corrections;
        onDisk.matchedBy = folders.matchedBy;
    }
}

std::string defaultName(const SessionFolders& folders, Date day) {
    std::vector<FileURL> places = folders.scope.moreFolders;
    for (const auto* folder : {&folders.audioFolder, &folders.videoFolder})
        if (*folder) places.insert(places.begin(), **folder);
    for (const FileURL& place : places)
        if (std::string name = place.lastPathComponent(); !name.empty()) return name;
    const auto local = calendar::fields(day);
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "Session %02d.%02d.%04d", local.day, local.month, local.year);
    return text.data();
}

JSON toJSON(const SessionInfo& info) {
    JSON json;
    json.set("id", toJSON(info.id));
    json.set("name", info.name);
    json.set("created", toJSON(info.created));
    json.set("modified", toJSON(info.modified));
    json.set("groupCount", info.groupCount);
    json.set("lockedCount", info.lockedCount);
    json.setIfPresent("folder", info.folder);
    json.set("nameAutoDerived", info.nameAutoDerived);
    return json;
}

template <>
SessionInfo fromJSON<SessionInfo>(const JSON& json) {
    SessionInfo info;
    info.id = required<UUID>(json, "id");
    info.name = required<std::string>(json, "name");
    info.created = required<Date>(json, "created");
    info.modified = required<Date>(json, "modified");
    info.groupCount = required<int>(json, "groupCount");
    info.lockedCount = required<int>(json, "lockedCount");
    info.folder = optional<std::string>(json, "folder");
    info.nameAutoDerived = optional<bool>(json, "nameAutoDerived").value_or(true);
    return info;
}

constexpr std::string_view matchedByKey = "matchedBy";

JSON toJSON(const SessionFolders& folders) {
    JSON json = JSON::object();
    setPath(json, "videoFolder", folders.videoFolder);
    setPath(json, "audioFolder", folders.audioFolder);
    setBytes(json, "videoBookmark", folders.videoBookmark);
    setBytes(json, "audioBookmark", folders.audioBookmark);
    setScanScope(json, folders.scope);
    setSourceCorrections(json, folders.corrections);
    if (folders.matchedBy) json.set(matchedByKey, toJSON(*folders.matchedBy));
    return json;
}

template <>
SessionFolders fromJSON<SessionFolders>(const JSON& json) {
    if (!json.isObject()) throw DecodingError("expected an object");
    const JSON* matchedBy = json.find(matchedByKey);
    return {optionalPath(json, "videoFolder"),
            optionalPath(json, "audioFolder"),
            optionalBytes(json, "videoBookmark"),
            optionalBytes(json, "audioBookmark"),
            scanScopeFrom(json),
            sourceCorrectionsFrom(json),
            matchedBy != nullptr ? std::optional(fromJSON<SourceCorrections>(*matchedBy)) : std::nullopt};
}

JSON toJSON(const FolderInfo& folder) {
    JSON json;
    json.set("name", folder.name);
    json.setIfPresent("lockitProjectID", folder.lockitProjectID);
    json.setIfPresent("metadataPrefix", folder.metadataPrefix);
    json.setIfPresent("activePresetName", folder.activePresetName);
    setBytes(json, "activeSettingsSnapshot", folder.activeSettingsSnapshot);
    return json;
}

template <>
FolderInfo fromJSON<FolderInfo>(const JSON& json) {
    return {required<std::string>(json, "name"), optional<std::string>(json, "lockitProjectID"),
            optional<std::string>(json, "metadataPrefix"), optional<std::string>(json, "activePresetName"),
            optionalBytes(json, "activeSettingsSnapshot")};
}

} // namespace orvane
