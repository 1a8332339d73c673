#include "OrvaneSyncApp/Controllers/SessionPlaces.h"

#include "Platform/Text.h"

#include <algorithm>
#include <set>
#include <utility>

namespace orvane {

SessionPlaces::SessionPlaces(const SessionStatus& sessions, std::shared_ptr<SessionFolderList> folders,
                             std::shared_ptr<FolderSettings> settings, Decide decide)
    : sessions_(sessions), folders_(std::move(folders)), settings_(std::move(settings)),
      decide_(std::move(decide)) {}

platform::Task SessionPlaces::setFolder(const UUID& sessionId,
                                        const std::optional<std::string>& folder) const {
    std::optional<std::string> name(platform::text::trimmed(folder.value_or("")));
    if (name->empty()) name.reset();
    return decide_(sessionId, {.folder = std::move(name)});
}

std::vector<std::string> SessionPlaces::folderNames() const {
    std::set<std::string> names;
    for (const SessionInfo& info : sessions_.sessions())
        if (info.folder) names.insert(*info.folder);
    for (const FolderInfo& folder : folders_->all()) names.insert(folder.name);
    return {names.begin(), names.end()};
}

bool SessionPlaces::createFolder(std::string_view name) {
    std::string trimmed(platform::text::trimmed(name));
    const auto taken = folderNames();
    if (trimmed.empty() || std::ranges::find(taken, trimmed) != taken.end()) return false;
    folders_->create(std::move(trimmed));
    return true;
}

bool SessionPlaces::renameFolder(std::string from, std::string_view to) {
    const std::string name(platform::text::trimmed(to));
    const auto taken = folderNames();
    const auto isTaken = [&](const std::string& one) { return std::ranges::find(taken, one) != taken.end(); };
    if (name.empty() || name == from || isTaken(name) || !isTaken(from)) return false;
    const std::vector<UUID> moved = sessions_.list().idsIn(from);
    folders_->rename(std::move(from), name);
    for (const UUID& id : moved) decide_(id, {.folder = name});
    return true;
}

void SessionPlaces::deleteEmptyFolder(const std::string& name) {
    if (sessions_.list().idsIn(name).empty() && folders_->find(name) != nullptr) folders_->remove(name);
}

std::optional<std::string> SessionPlaces::lockitProjectID(const UUID& sessionId) const {
    const FolderInfo* folder = folderOf(sessionId);
    return folder == nullptr ? std::nullopt : folder->lockitProjectID;
}

std::optional<std::string> SessionPlaces::metadataPrefix(const UUID& sessionId) const {
    const FolderInfo* folder = folderOf(sessionId);
    return folder == nullptr ? std::nullopt : folder->metadataPrefix;
}

std::optional<std::string> SessionPlaces::folderOfOpenSession() const {
    const SessionInfo* current = sessions_.currentSession();
    return current == nullptr ? std::nullopt : current->folder;
}

const FolderInfo* SessionPlaces::folderOf(const UUID& sessionId) const {
    const SessionInfo* info = sessions_.session(sessionId);
    return info == nullptr || !info->folder ? nullptr : folders_->find(*info->folder);
}

void SessionPlaces::captureSettings() {
    const auto folder = folderOfOpenSession();
    if (!folder) return;
    std::string snapshot = settings_->snapshot();
    const FolderInfo* info = folders_->find(*folder);
    if (info == nullptr || info->activeSettingsSnapshot != snapshot)
        folders_->setSettingsSnapshot(*folder, std::move(snapshot));
}

bool SessionPlaces::applySettings(const UUID& sessionId) {
    appliedSettings_.clear();
    const FolderInfo* folder = folderOf(sessionId);
    if (folder != nullptr && folder->activeSettingsSnapshot)
        appliedSettings_ = settings_->apply(*folder->activeSettingsSnapshot);
    return !appliedSettings_.empty();
}

} // namespace orvane
