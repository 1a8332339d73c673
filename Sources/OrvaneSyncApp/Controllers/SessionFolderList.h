#pragma once

#include "OrvaneSyncCore/Services/Persistence/SessionStore.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// The folders of the sessions as this process knows them: what the disk says, with the changes that are not
/// there yet. A change that can't be written stays, and is tried again with the next one. Interface thread;
/// the record is small, and is read and written at once.
class SessionFolderList {
  public:
    /// `store` outlives it.
    explicit SessionFolderList(const SessionStore& store) : store_(store) {}

    /// Sorted by name.
    const std::vector<FolderInfo>& all() const { return folders_; }
    /// Null when there is none.
    const FolderInfo* find(std::string_view name) const;
    /// What the last reading or writing failed at; absent when it succeeded.
    const std::optional<std::string>& readProblem() const { return readProblem_; }
    const std::optional<std::string>& writeFailure() const { return writeFailure_; }

    /// What the disk says at this moment; true where the list has become another one. One that can't be read
    /// is no reason to forget a folder.
    bool load();
    /// Takes effect at once; `write` brings it to the disk.
    void change(SessionStore::FolderChange change);
    bool isWritten() const { return unwritten_.empty(); }
    /// Brings it to the disk. For people: which file was kept beside the new one.
    std::optional<std::string> write();

  private:
    void applyUnwritten(std::vector<FolderInfo>& folders) const;

    const SessionStore& store_;
    std::vector<FolderInfo> folders_;
    std::vector<SessionStore::FolderChange> unwritten_;
    std::optional<std::string> readProblem_, writeFailure_;
};

} // namespace orvane
