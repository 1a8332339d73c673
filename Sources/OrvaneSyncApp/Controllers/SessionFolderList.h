#pragma once

#include "OrvaneSyncCore/Services/Persistence/SessionStore.h"
#include "Platform/Task.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// The folders of the sessions as this process knows them: what the disk says, with the changes that are not
/// there yet. A change holds in memory at once and is written on the queue, behind those before it; one that
/// can't be written stays, and is tried again by the next `write`. Interface thread. Held by a shared
/// pointer, as its writing holds it weakly.
class SessionFolderList : public std::enable_shared_from_this<SessionFolderList> {
  public:
    /// The queue outlives it.
    SessionFolderList(SessionStore store, platform::SerialQueue& queue,
                      std::shared_ptr<platform::MainThread> mainThread)
        : store_(std::move(store)), queue_(queue), mainThread_(std::move(mainThread)) {}

    std::function<void()> whenChanged;
    /// After every attempt to write; for people, the file that was kept beside the new one.
    std::function<void(const std::optional<std::string>& kept)> whenWritten;

    /// Sorted by name.
    const std::vector<FolderInfo>& all() const { return folders_; }
    /// Null when there is none.
    const FolderInfo* find(std::string_view name) const;
    /// What the last reading or writing failed at; absent when it succeeded.
    const std::optional<std::string>& readProblem() const { return readProblem_; }
    const std::optional<std::string>& writeFailure() const { return writeFailure_; }

    /// What the disk said. A list that can't be read is no reason to forget a folder.
    void adopt(SessionStore::Stored<std::vector<FolderInfo>> stored);

    void create(std::string name);
    void rename(std::string from, std::string to);
    void remove(std::string name);
    /// Of a folder, which is made where there is none.
    void setLockitProject(const std::string& folder, std::optional<std::string> projectID);
    void setMetadataPrefix(const std::string& folder, std::optional<std::string> prefix);
    /// Blank: none.
    void setActivePreset(const std::string& folder, const std::optional<std::string>& presetName);
    void setSettingsSnapshot(const std::string& folder, std::string snapshot);

    /// Ends when all changes are on the disk, or have failed.
    platform::Task write();
    /// Posts what is not written; for the end of the program, when no task goes on.
    void postUnwritten() const;

  private:
    void change(SessionStore::FolderChange change);
    void changeOne(const std::string& name, std::function<void(FolderInfo&)> change);
    static platform::Task writeAll(std::weak_ptr<SessionFolderList> weak);

    const SessionStore store_;
    platform::SerialQueue& queue_;
    const std::shared_ptr<platform::MainThread> mainThread_;
    std::vector<FolderInfo> folders_;
    std::vector<SessionStore::FolderChange> unwritten_;
    platform::Task writing_ = platform::Task::ended();
    std::optional<std::string> readProblem_, writeFailure_;
};

} // namespace orvane
