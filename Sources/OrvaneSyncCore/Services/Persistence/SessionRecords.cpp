#include "OrvaneSyncCore/Services/Persistence/SessionRecords.h"

#include "OrvaneSyncCore/Models/StoredForms.h"

#include <array>
#include <cstdio>

namespace orvane {

namespace {

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

template <>
struct JSONFields<SessionInfo> {
    static constexpr std::tuple list{JSONField{"id", &SessionInfo::id},
                                     JSONField{"name", &SessionInfo::name},
                                     JSONField{"created", &SessionInfo::created},
                                     JSONField{"modified", &SessionInfo::modified},
                                     JSONField{"groupCount", &SessionInfo::groupCount},
                                     JSONField{"lockedCount", &SessionInfo::lockedCount},
                                     JSONField{"folder", &SessionInfo::folder},
                                     addedLater(JSONField{"nameAutoDerived", &SessionInfo::nameAutoDerived})};
};

template <>
struct JSONFields<SessionFolders> {
    static constexpr std::tuple list{fieldAs<PathForm>("videoFolder", &SessionFolders::videoFolder),
                                     fieldAs<PathForm>("audioFolder", &SessionFolders::audioFolder),
                                     fieldAs<BytesForm>("videoBookmark", &SessionFolders::videoBookmark),
                                     fieldAs<BytesForm>("audioBookmark", &SessionFolders::audioBookmark),
                                     fieldAs<OwnKeysForm>("", &SessionFolders::scope),
                                     fieldAs<OwnKeysForm>("", &SessionFolders::corrections),
                                     JSONField{"matchedBy", &SessionFolders::matchedBy}};
};

template <>
struct JSONFields<FolderInfo> {
    static constexpr std::tuple list{
        JSONField{"name", &FolderInfo::name}, JSONField{"lockitProjectID", &FolderInfo::lockitProjectID},
        JSONField{"metadataPrefix", &FolderInfo::metadataPrefix},
        JSONField{"activePresetName", &FolderInfo::activePresetName},
        fieldAs<BytesForm>("activeSettingsSnapshot", &FolderInfo::activeSettingsSnapshot)};
};

JSON toJSON(const SessionInfo& info) { return fieldsToJSON(info); }

template <>
SessionInfo fromJSON<SessionInfo>(const JSON& json) {
    return madeFromJSON<SessionInfo>(json);
}

JSON toJSON(const SessionFolders& folders) { return fieldsToJSON(folders); }

template <>
SessionFolders fromJSON<SessionFolders>(const JSON& json) {
    if (!json.isObject()) throw DecodingError("expected an object");
    return madeFromJSON<SessionFolders>(json);
}

JSON toJSON(const FolderInfo& folder) { return fieldsToJSON(folder); }

template <>
FolderInfo fromJSON<FolderInfo>(const JSON& json) {
    return madeFromJSON<FolderInfo>(json);
}

} // namespace orvane
