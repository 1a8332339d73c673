#include "OrvaneSyncApp/Controllers/SessionManager.h"

#include "Platform/InterfaceThread.h"
#include "Platform/Text.h"

#include <algorithm>
#include <chrono>
#include <set>
#include <utility>

namespace orvane {

namespace {

constexpr std::chrono::milliseconds settingsDebounce{500};

FolderInfo* entry(std::vector<FolderInfo>& folders, std::string_view name) {
    const auto found = std::ranges::find(folders, name, &FolderInfo::name);
    return found == folders.end() ? nullptr : &*found;
}

FolderInfo& entryMade(std::vector<FolderInfo>& folders, const std::string& name) {
    if (FolderInfo* existing = entry(folders, name)) return *existing;
    return folders.emplace_back(FolderInfo{.name = name});
}

} // namespace

std::vector<std::string> SessionManager::folderNames() const {
    std::set<std::string> names;
    for (const SessionInfo& info : sessions_)
        if (info.folder) names.insert(*info.folder);
    for (const FolderInfo& folder : folders_.all()) names.insert(folder.name);
    return {names.begin(), names.end()};
}

bool SessionManager::createFolder(std::string_view name) {
    assertOnMainThread();
    const std::string trimmed(platform::text::trimmed(name));
    writeFolderChanges(); // who asks again wants to know whether it is written by now
    const auto taken = folderNames();
    if (trimmed.empty() || std::ranges::find(taken, trimmed) != taken.end()) return false;
    changeFolders([trimmed](std::vector<FolderInfo>& folders) { entryMade(folders, trimmed); });
    return true;
}

bool SessionManager::renameFolder(std::string from, std::string_view to) {
    assertOnMainThread();
    const std::string name(platform::text::trimmed(to));
    loadSessionList(); // another process may have put sessions there
    const auto taken = folderNames();
    if (name.empty() || name == from || std::ranges::find(taken, name) != taken.end()) return false;
    std::vector<UUID> moved;
    for (const SessionInfo& info : sessions_)
        if (info.folder == from) moved.push_back(info.id);
    changeFolders([old = std::move(from), name](std::vector<FolderInfo>& folders) {
        FolderInfo* existing = entry(folders, old);
        if (existing != nullptr && entry(folders, name) == nullptr)
            existing->name = name;
        else
            entryMade(folders, name);
    });
    for (const UUID& id : moved) persistRecord(id, {.folder = name});
    return true;
}

void SessionManager::deleteEmptyFolder(const std::string& name) {
    assertOnMainThread();
    loadSessionList(); // as above
    if (std::ranges::any_of(sessions_, [&](const SessionInfo& info) { return info.folder == name; })) return;
    if (folderInfo(name) == nullptr) return;
    changeFolders([name](std::vector<FolderInfo>& folders) {
        std::erase_if(folders, [&](const FolderInfo& folder) { return folder.name == name; });
    });
}

void SessionManager::setLockitProject(const std::string& folder, std::optional<std::string> projectID) {
    changeFolder(folder,
                 [projectID = std::move(projectID)](FolderInfo& info) { info.lockitProjectID = projectID; });
}

void SessionManager::setMetadataPrefix(const std::string& folder, std::optional<std::string> prefix) {
    changeFolder(folder, [prefix = std::move(prefix)](FolderInfo& info) { info.metadataPrefix = prefix; });
}

void SessionManager::setActivePreset(const std::string& folder,
                                     const std::optional<std::string>& presetName) {
    std::optional<std::string> name(platform::text::trimmed(presetName.value_or("")));
    if (name->empty()) name.reset();
    changeFolder(folder, [name](FolderInfo& info) { info.activePresetName = name; });
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
    const SessionInfo* current = currentSessionId_ ? session(*currentSessionId_) : nullptr;
    return current == nullptr ? std::nullopt : current->folder;
}

const FolderInfo* SessionManager::folderOfSession(const UUID& sessionId) const {
    const SessionInfo* info = session(sessionId);
    return info == nullptr || !info->folder ? nullptr : folderInfo(*info->folder);
}

void SessionManager::changeFolder(const std::string& name, std::function<void(FolderInfo&)> change) {
    assertOnMainThread();
    changeFolders([name, change = std::move(change)](std::vector<FolderInfo>& folders) {
        change(entryMade(folders, name));
    });
}

void SessionManager::changeFolders(SessionStore::FolderChange change) {
    folders_.change(std::move(change));
    writeFolderChanges();
    notify(SessionField::folderInfos);
}

void SessionManager::loadFolderInfos() {
    if (folders_.load()) notify(SessionField::folderInfos);
    reportProblem();
}

void SessionManager::writeFolderChanges() {
    if (folders_.isWritten()) return;
    if (const auto kept = folders_.write()) reportKeptFiles({*kept});
    reportFailures();
}

// Settings that follow the work.

void SessionManager::captureActiveSettingsSnapshot() {
    const platform::MayBlock record;
    assertOnMainThread();
    const auto folder = currentSessionFolderName();
    if (!folder) return;
    loadFolderInfos();
    const std::string snapshot = presetManager_.snapshotData(*settings_);
    const FolderInfo* info = folderInfo(*folder);
    if (info != nullptr && info->activeSettingsSnapshot == snapshot) return;
    changeFolder(*folder, [snapshot](FolderInfo& changed) { changed.activeSettingsSnapshot = snapshot; });
}

void SessionManager::startObservingSettingsChanges() {
    // Settings change on any thread.
    settingsObservation_ =
        settings_->onChange([weak = weak_from_this(), main = mainThread_](const std::string&) {
            main->post([weak] {
                if (const auto self = weak.lock()) self->settingsChanged();
            });
        });
}

void SessionManager::settingsChanged() {
    if (settingsTimer_) settingsTimer_->cancel();
    settingsTimer_ = mainThread_->after(settingsDebounce, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) self->captureNowIfScheduled();
    });
}

void SessionManager::captureNowIfScheduled() {
    if (!settingsTimer_) return;
    settingsTimer_->cancel();
    settingsTimer_.reset();
    captureActiveSettingsSnapshot();
}

} // namespace orvane
