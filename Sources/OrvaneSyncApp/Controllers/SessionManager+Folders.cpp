#include "OrvaneSyncApp/Controllers/FolderSettings.h"
#include "OrvaneSyncApp/Controllers/SessionManager.h"

#include "Platform/Text.h"

#include <algorithm>
#include <set>
#include <utility>

namespace orvane {

std::vector<std::string> SessionManager::folderNames() const {
    std::set<std::string> names;
    for (const SessionInfo& info : sessions())
        if (info.folder) names.insert(*info.folder);
    for (const FolderInfo& folder : folders_->all()) names.insert(folder.name);
    return {names.begin(), names.end()};
}

bool SessionManager::createFolder(std::string_view name) {
    assertOnMainThread();
    std::string trimmed(platform::text::trimmed(name));
    const auto taken = folderNames();
    if (trimmed.empty() || std::ranges::find(taken, trimmed) != taken.end()) return false;
    folders_->create(std::move(trimmed));
    return true;
}

bool SessionManager::renameFolder(std::string from, std::string_view to) {
    assertOnMainThread();
    const std::string name(platform::text::trimmed(to));
    const auto taken = folderNames();
    if (name.empty() || name == from || std::ranges::find(taken, name) != taken.end()) return false;
    const std::vector<UUID> moved = list_.idsIn(from);
    folders_->rename(std::move(from), name);
    for (const UUID& id : moved) decide(id, {.folder = name});
    return true;
}

void SessionManager::deleteEmptyFolder(const std::string& name) {
    assertOnMainThread();
    if (list_.idsIn(name).empty() && folders_->find(name) != nullptr) folders_->remove(name);
}

std::optional<std::string> SessionManager::lockitProjectID(const UUID& sessionId) const {
    const FolderInfo* folder = folderOfSession(sessionId);
    return folder == nullptr ? std::nullopt : folder->lockitProjectID;
}

std::optional<std::string> SessionManager::metadataPrefix(const UUID& sessionId) const {
    const FolderInfo* folder = folderOfSession(sessionId);
    return folder == nullptr ? std::nullopt : folder->metadataPrefix;
}

std::optional<std::string> SessionManager::currentSessionFolderName() const {
    const SessionInfo* current = open_.id ? session(*open_.id) : nullptr;
    return current == nullptr ? std::nullopt : current->folder;
}

const FolderInfo* SessionManager::folderOfSession(const UUID& sessionId) const {
    const SessionInfo* info = session(sessionId);
    return info == nullptr || !info->folder ? nullptr : folders_->find(*info->folder);
}

void SessionManager::captureActiveSettingsSnapshot() {
    assertOnMainThread();
    const auto folder = currentSessionFolderName();
    if (!folder) return;
    std::string snapshot = folderSettings_->snapshot();
    const FolderInfo* info = folders_->find(*folder);
    if (info == nullptr || info->activeSettingsSnapshot != snapshot)
        folders_->setSettingsSnapshot(*folder, std::move(snapshot));
}

void SessionManager::applySettingsOfFolder(const UUID& sessionId) {
    settingsOfFolder_.clear();
    const FolderInfo* folder = folderOfSession(sessionId);
    if (folder != nullptr && folder->activeSettingsSnapshot)
        settingsOfFolder_ = folderSettings_->apply(*folder->activeSettingsSnapshot);
    if (!settingsOfFolder_.empty()) notify(SessionField::settingsOfFolder);
}

} // namespace orvane
