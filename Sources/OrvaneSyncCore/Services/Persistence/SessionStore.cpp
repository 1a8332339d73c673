#include "OrvaneSyncCore/Services/Persistence/SessionStore.h"

#include "OrvaneSyncCore/Services/Persistence/GroupsCoding.h"
#include "OrvaneSyncCore/Services/Persistence/Rewriting.h"
#include "Platform/FileLock.h"
#include "Platform/JSONParts.h"
#include "Platform/Stop.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cerrno>
#include <unordered_set>

namespace orvane {

namespace files = platform::files;
using platform::FileLock;

namespace {

constexpr std::string_view sessionExtension = ".orvanesync";
constexpr std::string_view deletedExtension = ".deleted";
// Bytes.
constexpr std::uint64_t largestRecord = std::uint64_t{256} << 20U; // wild tracks contain their metadata
constexpr std::uint64_t largestGroups = std::uint64_t{1} << 30U;

/// Only a file that does not exist is missing: one that cannot be accessed may contain work.
bool isMissing(const std::string& path) { return !files::attributes(path) && errno == ENOENT; }

template <class Record>
struct RecordCoding {
    static Record decode(const std::string& text, const std::stop_token& /*stop*/) {
        return fromJSON<Record>(JSON::parse(text));
    }
    static JSON encode(const Record& record) { return toJSON(record); }
};

template <class Record>
struct RecordCoding<std::vector<Record>> {
    static std::vector<Record> decode(const std::string& text, const std::stop_token& stop) {
        const auto parts = platform::listParts(text, stop);
        if (!parts) throw DecodingError("expected a list");
        std::vector<Record> records;
        records.reserve(parts->size());
        for (const std::string_view part : *parts) {
            platform::throwIfStopped(stop);
            records.push_back(fromJSON<Record>(JSON::parse(part)));
        }
        return records;
    }
    static JSON encode(const std::vector<Record>& records) { return toJSONArray(records); }
};

template <class Record>
struct RecordFile : SessionStore::Stored<Record> {
    std::string text; ///< as it is in the file
};

template <class Record>
RecordFile<Record> readRecord(const std::string& path, const std::stop_token& stop = {}) {
    RecordFile<Record> file;
    if (isMissing(path)) return file;
    try {
        file.text = files::readText(path, largestRecord, stop);
        file.record = RecordCoding<Record>::decode(file.text, stop);
    } catch (const std::exception& error) { // also too little memory for a file that claims to be large
        file.problem = path + ": " + error.what();
    }
    return file;
}

template <class Record>
std::string recordText(const Record& record) {
    return RecordCoding<Record>::encode(record).dump(JSON::Layout::pretty) + "\n";
}

/// Replaces the record by the result of `change`. A record that cannot be read is kept beside it and counts
/// as absent; one with content that this version does not know is kept as well. An unchanged text is not
/// written again.
template <class Record, class Change>
SessionStore::Changed<Record> changeRecord(const std::string& path, const Change& change) {
    RecordFile<Record> file = readRecord<Record>(path);
    std::optional<std::string> kept;
    if (file.problem)
        kept = "A file could not be read and was kept as " + files::keepBeside(path, files::unreadableSuffix);
    else if (file.record && losesSomething(file.text, recordText(*file.record)))
        kept = "A file holds what this version does not know and was kept as " +
               files::keepBeside(path, files::otherSuffix);
    Record record = change(std::move(file.record));
    const std::string text = recordText(record);
    if (file.problem || text != file.text) files::writeAtomically(path, text);
    return {std::move(record), std::move(kept)};
}

bool isDirectory(const std::string& path) {
    const auto there = files::attributes(path);
    return there && there->isDirectory;
}

std::string deletedName(const std::string& directory, const UUID& id) {
    return directory + "/." + id.text() + std::string(deletedExtension);
}

/// Removes the folders that a killed process had begun to remove.
void finishRemovals(const std::string& directory) {
    for (const std::string& name : files::childNames(directory).value_or(std::vector<std::string>())) {
        if (!name.starts_with('.') || !name.ends_with(deletedExtension)) continue;
        const std::string_view id =
            std::string_view(name).substr(1, name.size() - 1 - deletedExtension.size());
        if (UUID::fromText(id)) files::removeTree(directory + "/" + name);
    }
}

} // namespace

void sortByName(std::vector<FolderInfo>& folders) {
    std::ranges::stable_sort(folders, {}, &FolderInfo::name);
}

std::string SessionStore::folderOf(const UUID& id) const {
    std::string path = directory_ + "/" + id.text() + std::string(sessionExtension);
    if (files::exists(path)) return path;
    // The name that a person or a file system without case may have given it.
    const std::string lower =
        directory_ + "/" + platform::text::lowercased(id.text()) + std::string(sessionExtension);
    return files::exists(lower) ? lower : path;
}

std::string SessionStore::groupsPath(const UUID& id) const { return folderOf(id) + "/groups.json"; }

bool SessionStore::exists(const UUID& id) const { return isDirectory(folderOf(id)); }

bool SessionStore::isDeleted(const UUID& id) const {
    return isDirectory(directory_) && isMissing(folderOf(id));
}

void SessionStore::create(const UUID& id) const {
    if (exists(id)) return;
    files::createDirectories(folderOf(id));
    files::syncFolder(directory_);
}

void SessionStore::remove(const UUID& id) const {
    const std::string folder = folderOf(id), deleted = deletedName(directory_, id);
    if (files::exists(deleted)) files::removeTree(deleted);
    {
        const FileLock lock = FileLock::ofFolder(folder); // waits for a write in progress
        files::rename(folder, deleted);
        files::syncFolder(directory_);
    }
    try {
        finishRemovals(directory_);
    } catch (const platform::FileError&) {
        // The session is removed; the remaining files are removed with the next session.
    }
}

std::vector<SessionInfo> SessionStore::list(const std::function<void(const std::string& problem)>& unreadable,
                                            KnownRecords* known) const {
    std::vector<SessionInfo> sessions;
    std::unordered_set<UUID> ids;
    KnownRecords read;
    for (const std::string& name : files::childNames(directory_).value_or(std::vector<std::string>())) {
        if (!name.ends_with(sessionExtension)) continue;
        const auto id =
            UUID::fromText(std::string_view(name).substr(0, name.size() - sessionExtension.size()));
        if (!id || !isDirectory(directory_ + "/" + name) || !ids.insert(*id).second) continue;
        // Read before the record, so that a later write is noticed next time.
        const auto file = known != nullptr ? files::attributes(infoPath(*id)) : std::nullopt;
        const auto before = known != nullptr ? known->find(*id) : KnownRecords::iterator();
        const bool isKnown = file && before != known->end() && file->isUnchangedSince(before->second.first);
        Stored<SessionInfo> info = isKnown ? Stored<SessionInfo>{before->second.second} : readInfo(*id);
        if (info.problem && unreadable) unreadable(*info.problem);
        if (!info.record) continue;
        if (file) read.emplace(*id, std::pair(*file, *info.record));
        sessions.push_back(std::move(*info.record));
    }
    if (known != nullptr) *known = std::move(read);
    std::ranges::sort(sessions, [](const SessionInfo& a, const SessionInfo& b) {
        return a.modified != b.modified ? a.modified > b.modified : a.id < b.id;
    });
    return sessions;
}

SessionStore::Stored<SessionInfo> SessionStore::readInfo(const UUID& id) const {
    Stored<SessionInfo> info = readRecord<SessionInfo>(infoPath(id));
    if (info.record) info.record->id = id; // the name of the folder is the id
    if (info.problem) info.problem = "The record of a session can't be read (" + *info.problem + ")";
    return info;
}

SessionStore::Changed<SessionInfo> SessionStore::changeInfo(const SessionInfo& known,
                                                            const SessionInfoChange& change) const {
    const FileLock lock = FileLock::ofFolder(folderOf(known.id));
    return changeRecord<SessionInfo>(infoPath(known.id), [&](std::optional<SessionInfo> onDisk) {
        SessionInfo info = std::move(onDisk).value_or(known);
        info.id = known.id;
        change.apply(info);
        return info;
    });
}

SessionStore::Groups SessionStore::readGroups(const UUID& id, const std::stop_token& stop) const {
    const std::string path = groupsPath(id);
    Groups result;
    if (isMissing(path)) return result;
    result.file = files::attributes(path);
    try {
        result.groups = groupsFromText(files::readText(path, largestGroups, stop), stop);
    } catch (const std::exception& error) { // also too little memory for a file that claims to be large
        result.problem = "The clips of this session can't be read (" + path + ": " + error.what() + ")";
    }
    return result;
}

SessionStore::Stored<SessionFolders> SessionStore::readFolders(const UUID& id) const {
    Stored<SessionFolders> folders = readRecord<SessionFolders>(foldersPath(id));
    if (folders.problem)
        folders.problem = "The media folders of this session can't be read (" + *folders.problem + ")";
    return folders;
}

SessionStore::Changed<SessionFolders> SessionStore::changeFolders(const UUID& id,
                                                                  const SessionFoldersChange& change) const {
    const FileLock lock = FileLock::ofFolder(folderOf(id));
    return changeRecord<SessionFolders>(foldersPath(id), [&](std::optional<SessionFolders> onDisk) {
        if (!onDisk) return change.folders;
        change.apply(*onDisk);
        return std::move(*onDisk);
    });
}

SessionStore::Stored<std::vector<WildTrack>> SessionStore::readWildTracks(const UUID& id,
                                                                          const std::stop_token& stop) const {
    auto tracks = readRecord<std::vector<WildTrack>>(wildTracksPath(id), stop);
    if (tracks.problem)
        tracks.problem = "The wild tracks of this session can't be read (" + *tracks.problem + ")";
    return tracks;
}

SessionStore::Changed<std::vector<WildTrack>> SessionStore::changeWildTracks(const UUID& id,
                                                                             const WildTracksChange& change,
                                                                             bool areOtherClipsOnDisk) const {
    using Tracks = std::vector<WildTrack>;
    const FileLock lock = FileLock::ofFolder(folderOf(id));
    const std::string path = wildTracksPath(id);
    if (isMissing(path) && (!change.tracks || change.tracks->empty())) return {};
    return changeRecord<Tracks>(path, [&](std::optional<Tracks> onDisk) {
        Tracks tracks = onDisk ? std::move(*onDisk) : Tracks();
        change.apply(tracks, onDisk && areOtherClipsOnDisk);
        return tracks;
    });
}

SessionStore::Stored<std::vector<FolderInfo>> SessionStore::readFolderInfos() const {
    using Folders = std::vector<FolderInfo>;
    const std::string older = directory_ + "/empty_folders.json";
    Stored<Folders> folders = readRecord<Folders>(folderInfosPath());
    if (!folders.record) {
        Folders& list = folders.record.emplace();
        if (const auto names = readRecord<std::vector<std::string>>(older).record) {
            for (const std::string& name : *names) list.push_back({.name = name});
            try {
                list = changeFolderInfos(list, [](Folders&) {}).record;
                files::remove(older);
            } catch (const platform::FileError&) {
                // The old file stays and is converted next time.
            }
        }
    }
    sortByName(*folders.record);
    if (folders.problem)
        folders.problem = "The list of session folders can't be read (" + *folders.problem + ")";
    return folders;
}

SessionStore::Changed<std::vector<FolderInfo>>
SessionStore::changeFolderInfos(const std::vector<FolderInfo>& known, const FolderChange& change) const {
    using Folders = std::vector<FolderInfo>;
    files::createDirectories(directory_);
    const FileLock lock = FileLock::ofFolder(directory_);
    return changeRecord<Folders>(folderInfosPath(), [&](std::optional<Folders> onDisk) {
        Folders folders = std::move(onDisk).value_or(known);
        change(folders);
        sortByName(folders);
        return folders;
    });
}

} // namespace orvane
