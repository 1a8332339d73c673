#include "OrvaneSyncApp/Controllers/SessionFolderList.h"

#include "Platform/OnQueue.h"
#include "Platform/Text.h"

#include <algorithm>
#include <utility>

namespace orvane {

namespace {

using FolderChanges = std::vector<SessionStore::FolderChange>;

FolderInfo* entry(std::vector<FolderInfo>& folders, std::string_view name) {
    const auto found = std::ranges::find(folders, name, &FolderInfo::name);
    return found == folders.end() ? nullptr : &*found;
}

FolderInfo& entryMade(std::vector<FolderInfo>& folders, const std::string& name) {
    if (FolderInfo* existing = entry(folders, name)) return *existing;
    return folders.emplace_back(FolderInfo{.name = name});
}

void applyAll(const FolderChanges& changes, std::vector<FolderInfo>& folders) {
    for (const auto& change : changes) change(folders);
}

/// The result of writing the list.
struct FolderListOutcome {
    std::optional<SessionStore::Changed<std::vector<FolderInfo>>> changed{};
    std::string failure{};
};

FolderListOutcome writeFolderList(const SessionStore& store, const std::vector<FolderInfo>& known,
                                  const FolderChanges& changes) {
    try {
        return {store.changeFolderInfos(
                    known, [&](std::vector<FolderInfo>& folders) { applyAll(changes, folders); }),
                {}};
    } catch (const platform::FileError& error) {
        return {std::nullopt, std::string("folders.json: ") + error.what()};
    }
}

} // namespace

const FolderInfo* SessionFolderList::find(std::string_view name) const {
    const auto found = std::ranges::find(folders_, name, &FolderInfo::name);
    return found == folders_.end() ? nullptr : &*found;
}

void SessionFolderList::adopt(SessionStore::Stored<std::vector<FolderInfo>> stored) {
    if (!stored.problem) stored_ = std::move(*stored.record);
    std::vector<FolderInfo> folders = stored_;
    applyAll(unwritten_, folders);
    sortByName(folders);
    readProblem_ = std::move(stored.problem);
    if (std::exchange(folders_, folders) != folders && whenChanged) whenChanged();
}

void SessionFolderList::create(std::string name) {
    change([name = std::move(name)](std::vector<FolderInfo>& folders) { entryMade(folders, name); });
}

void SessionFolderList::rename(std::string from, std::string to) {
    change([from = std::move(from), to = std::move(to)](std::vector<FolderInfo>& folders) {
        FolderInfo* existing = entry(folders, from);
        if (existing != nullptr && entry(folders, to) == nullptr)
            existing->name = to;
        else
            entryMade(folders, to);
    });
}

void SessionFolderList::remove(std::string name) {
    change([name = std::move(name)](std::vector<FolderInfo>& folders) {
        std::erase_if(folders, [&](const FolderInfo& folder) { return folder.name == name; });
    });
}

void SessionFolderList::setLockitProject(const std::string& folder, std::optional<std::string> projectID) {
    changeOne(folder,
              [projectID = std::move(projectID)](FolderInfo& info) { info.lockitProjectID = projectID; });
}

void SessionFolderList::setMetadataPrefix(const std::string& folder, std::optional<std::string> prefix) {
    changeOne(folder, [prefix = std::move(prefix)](FolderInfo& info) { info.metadataPrefix = prefix; });
}

void SessionFolderList::setActivePreset(const std::string& folder,
                                        const std::optional<std::string>& presetName) {
    std::optional<std::string> name(platform::text::trimmed(presetName.value_or("")));
    if (name->empty()) name.reset();
    changeOne(folder, [name = std::move(name)](FolderInfo& info) { info.activePresetName = name; });
}

void SessionFolderList::setSettingsSnapshot(const std::string& folder, std::string snapshot) {
    changeOne(folder,
              [snapshot = std::move(snapshot)](FolderInfo& info) { info.activeSettingsSnapshot = snapshot; });
}

void SessionFolderList::changeOne(const std::string& name, std::function<void(FolderInfo&)> change) {
    this->change([name, change = std::move(change)](std::vector<FolderInfo>& folders) {
        change(entryMade(folders, name));
    });
}

void SessionFolderList::change(SessionStore::FolderChange change) {
    change(folders_);
    sortByName(folders_);
    unwritten_.push_back(std::move(change));
    write();
    if (whenChanged) whenChanged();
}

platform::Task SessionFolderList::write() {
    if (writing_.isDone() && !unwritten_.empty()) writing_ = writeAll(weak_from_this());
    return writing_;
}

void SessionFolderList::postUnwritten() const {
    if (unwritten_.empty()) return;
    queue_.post(
        [store = store_, known = stored_, changes = unwritten_] { writeFolderList(store, known, changes); });
}

/// One write at a time. The changes that it wrote are the first of those that wait when it ends.
platform::Task SessionFolderList::writeAll(std::weak_ptr<SessionFolderList> weak) {
    for (;;) {
        auto self = weak.lock();
        if (!self || self->unwritten_.empty()) co_return;
        const auto count = static_cast<std::ptrdiff_t>(self->unwritten_.size());
        auto writing =
            platform::onQueue(self->queue_, self->mainThread_,
                              [store = self->store_, known = self->stored_, changes = self->unwritten_] {
                                  return writeFolderList(store, known, changes);
                              });
        self.reset();
        FolderListOutcome outcome = co_await writing;
        self = weak.lock();
        if (!self) co_return;
        if (!outcome.changed) {
            self->writeFailure_ = std::move(outcome.failure);
            if (self->whenWritten) self->whenWritten(std::nullopt);
            co_return;
        }
        self->unwritten_.erase(self->unwritten_.begin(), self->unwritten_.begin() + count);
        self->writeFailure_.reset();
        self->adopt({.record = std::move(outcome.changed->record)});
        if (self->whenWritten) self->whenWritten(outcome.changed->kept);
    }
}

} // namespace orvane
