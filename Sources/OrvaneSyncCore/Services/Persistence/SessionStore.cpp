#include "OrvaneSyncCore/Services/Persistence/SessionStore.h"

#include "OrvaneSyncCore/Services/Persistence/GroupsCoding.h"
#include "Platform/FileLock.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cerrno>
#include <unordered_set>

namespace orvane {

namespace files = platform::files;
using platform::FileLock;

namespace {

constexpr std::string_view extension = ".orvanesync";
constexpr std::string_view deletedExtension = ".deleted";
constexpr std::uint64_t largestRecord = std::uint64_t{16} << 20U; // bytes

std::string prettyText(const JSON& json) { return json.dump(JSON::Layout::pretty) + "\n"; }

/// What `decode` makes of the file; nothing when it can't be read or is something else.
template <class Decode>
auto readAs(const std::string& path, const Decode& decode) -> std::optional<decltype(decode(JSON()))> {
    try {
        return decode(JSON::parse(files::readText(path, largestRecord)));
    } catch (const platform::FileError&) {
        return std::nullopt;
    } catch (const platform::JSONError&) {
        return std::nullopt;
    } catch (const DecodingError&) {
        return std::nullopt;
    }
}

template <class Record>
std::optional<Record> readRecord(const std::string& path) {
    return readAs(path, [](const JSON& json) { return fromJSON<Record>(json); });
}

template <class Record>
std::optional<std::vector<Record>> readRecords(const std::string& path) {
    return readAs(path, [](const JSON& json) {
        JSON object;
        object.set("list", json);
        return requiredArray<Record>(object, "list");
    });
}

/// Writes a record in place of the one that is there; one that can't be read is kept beside it.
template <class Record>
void writeRecord(const std::string& path, const Record& record) {
    if (files::exists(path) && !readRecord<Record>(path)) files::keepAs(path, files::unreadableName(path));
    files::writeAtomically(path, prettyText(toJSON(record)));
}

bool isDirectory(const std::string& path) {
    const auto there = files::attributes(path);
    return there && there->isDirectory;
}

/// Only what is not there counts as that: a file that can't be looked at may hold clips.
bool isMissing(const std::string& path) { return !files::attributes(path) && errno == ENOENT; }

std::string deletedName(const std::string& directory, const UUID& id) {
    return directory + "/." + id.text() + std::string(deletedExtension);
}

/// What a process that was killed had begun to remove.
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
    const std::string path = directory_ + "/" + id.text() + std::string(extension);
    if (files::exists(path)) return path;
    // As a file system that knows no case, or a person, may have named it.
    const std::string lower =
        directory_ + "/" + platform::text::lowercased(id.text()) + std::string(extension);
    return files::exists(lower) ? lower : path;
}

std::string SessionStore::groupsPath(const UUID& id) const { return folderOf(id) + "/groups.json"; }

bool SessionStore::exists(const UUID& id) const { return isDirectory(folderOf(id)); }

void SessionStore::create(const UUID& id) const {
    if (exists(id)) return;
    files::createDirectories(folderOf(id));
    files::syncFolder(directory_);
}

void SessionStore::remove(const UUID& id) const {
    const std::string folder = folderOf(id), deleted = deletedName(directory_, id);
    if (files::exists(deleted)) files::removeTree(deleted);
    {
        const FileLock lock = FileLock::ofFolder(folder); // a write that runs ends first
        files::rename(folder, deleted);
        files::syncFolder(directory_);
    }
    finishRemovals(directory_);
}

std::vector<SessionInfo> SessionStore::list() const {
    std::vector<SessionInfo> sessions;
    std::unordered_set<UUID> ids;
    for (const std::string& name : files::childNames(directory_).value_or(std::vector<std::string>())) {
        if (!name.ends_with(extension)) continue;
        const auto id = UUID::fromText(std::string_view(name).substr(0, name.size() - extension.size()));
        if (!id || !isDirectory(directory_ + "/" + name) || !ids.insert(*id).second) continue;
        auto info = readRecord<SessionInfo>(folderOf(*id) + "/session.json");
        if (!info) continue;
        info->id = *id;
        sessions.push_back(std::move(*info));
    }
    std::ranges::sort(sessions, [](const SessionInfo& a, const SessionInfo& b) {
        return a.modified != b.modified ? a.modified > b.modified : a.id < b.id;
    });
    return sessions;
}

void SessionStore::writeInfo(const SessionInfo& info) const {
    writeRecord(folderOf(info.id) + "/session.json", info);
}

SessionStore::Groups SessionStore::readGroups(const UUID& id) const {
    const std::string path = groupsPath(id);
    Groups result;
    if (isMissing(path)) return result;
    result.file = files::attributes(path);
    try {
        result.groups = groupsFromText(files::readText(path));
    } catch (const std::exception& error) { // too little memory for a file that claims much, too
        result.problem = "The clips of this session can't be read (" + path + ": " + error.what() + ")";
    }
    return result;
}

std::optional<SessionFolders> SessionStore::readFolders(const UUID& id) const {
    return readRecord<SessionFolders>(folderOf(id) + "/folders.json");
}

void SessionStore::writeFolders(const UUID& id, const SessionFolders& folders) const {
    writeRecord(folderOf(id) + "/folders.json", folders);
}

std::vector<FolderInfo> SessionStore::readFolderInfos() const {
    const std::string older = directory_ + "/empty_folders.json";
    auto folders = readRecords<FolderInfo>(folderInfosPath());
    if (!folders) {
        folders.emplace();
        const auto names = readRecords<std::string>(older);
        if (names) {
            for (const std::string& name : *names) folders->push_back({.name = name});
            try {
                folders = changeFolderInfos(*folders, [](std::vector<FolderInfo>&) {});
                files::remove(older);
            } catch (const platform::FileError&) {
                // It stays, and is taken over the next time.
            }
        }
    }
    sortByName(*folders);
    return *folders;
}

std::vector<FolderInfo> SessionStore::changeFolderInfos(const std::vector<FolderInfo>& known,
                                                        const FolderChange& change) const {
    files::createDirectories(directory_);
    const FileLock lock = FileLock::ofFolder(directory_);
    const std::string path = folderInfosPath();
    std::vector<FolderInfo> folders = known;
    if (!isMissing(path)) {
        if (auto onDisk = readRecords<FolderInfo>(path))
            folders = std::move(*onDisk);
        else
            files::keepAs(path, files::unreadableName(path));
    }
    change(folders);
    sortByName(folders);
    files::writeAtomically(path, prettyText(toJSONArray(folders)));
    return folders;
}

} // namespace orvane
