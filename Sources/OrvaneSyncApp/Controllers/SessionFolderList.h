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

/// The folders of the sessions as this process knows them: the contents of the disk plus the changes that are
/// not written yet. A change takes effect in memory at once and is written on the queue, in order. A change
/// that can't be written is kept, and the next `write` tries it again. Interface thread. Held by a shared
/// pointer, because its writing holds a weak one.
class SessionFolderList : public std::enable_shared_from_this<SessionFolderList> {
  public:
    /// The queue outlives this object.
    SessionFolderList(SessionStore store, platform::SerialQueue& queue,
                      std::shared_ptr<platform::MainThread> mainThread)
        : store_(std::move(store)), queue_(queue), mainThread_(std::move(mainThread)) {}

    std::function<void()> whenChanged;
    /// Called after every attempt to write; `kept` is a text for people about the file that was kept beside
    /// the new one.
    std::function<void(const std::optional<std::string>& kept)> whenWritten;

    /// Sorted by name.
    const std::vector<FolderInfo>& all() const { return folders_; }
    /// Null when there is none.
    const FolderInfo* find(std::string_view name) const;
    /// Why the last reading or writing failed; absent if it succeeded.
    const std::optional<std::string>& readProblem() const { return readProblem_; }
    const std::optional<std::string>& writeFailure() const { return writeFailure_; }

    /// Takes over the list from the disk. If that list can't be read, no folder is removed.
    void adopt(SessionStore::Stored<std::vector<FolderInfo>> stored);

    void create(std::string name);
    void rename(std::string from, std::string to);
    void remove(std::string name);
    /// Sets the project of a folder; creates the folder if there is none.
    void setLockitProject(const std::string& folder, std::optional<std::string> projectID);
    void setMetadataPrefix(const std::string& folder, std::optional<std::string> prefix);
    /// Blank: none.
    void setActivePreset(const std::string& folder, const std::optional<std::string>& presetName);
    void setSettingsSnapshot(const std::string& folder, std::string snapshot);

    /// Ends when all changes are written or have failed.
    platform::Task write();
    /// Posts the unwritten changes to the queue; for the end of the program, when tasks do not continue.
    void postUnwritten() const;

  private:
    void change(SessionStore::FolderChange change);
    void changeOne(const std::string& name, std::function<void(FolderInfo&)> change);
    static platform::Task writeAll(std::weak_ptr<SessionFolderList> weak);

    const SessionStore store_;
    platform::SerialQueue& queue_;
    const std::shared_ptr<platform::MainThread> mainThread_;
    std::vector<FolderInfo> stored_;  ///< as last read or written, without the unwritten changes
    std::vector<FolderInfo> folders_; ///< with them
    std::vector<SessionStore::FolderChange> unwritten_;
    platform::Task writing_ = platform::Task::ended();
    std::optional<std::string> readProblem_, writeFailure_;
};

} // namespace orvane
