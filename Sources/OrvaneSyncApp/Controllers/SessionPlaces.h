#pragma once

#include "OrvaneSyncApp/Controllers/FolderSettings.h"
#include "OrvaneSyncApp/Controllers/SessionFolderList.h"
#include "OrvaneSyncApp/Controllers/SessionStatus.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// In which folder each session lies, and what it has from it. What another process has made of the folders:
/// `SessionManager::loadSessionList` first. Interface thread.
class SessionPlaces {
  public:
    using Decide = std::function<platform::Task(const UUID&, SessionInfoChange)>;
    /// `sessions` outlives it. `decide` changes a session; its task ends as that of `SessionManager::save`.
    SessionPlaces(const SessionStatus& sessions, std::shared_ptr<SessionFolderList> folders,
                  std::shared_ptr<FolderSettings> settings, Decide decide);

    /// Blank: out of its folder.
    platform::Task setFolder(const UUID& sessionId, const std::optional<std::string>& folder) const;

    /// Those of sessions too, ascending.
    std::vector<std::string> folderNames() const;
    /// False for a blank name or one that is taken.
    bool createFolder(std::string_view name);
    /// Its sessions move along. False for a blank name or one that is taken.
    bool renameFolder(std::string from, std::string_view to);
    /// Nothing while a session lies in it.
    void deleteEmptyFolder(const std::string& name);

    std::optional<std::string> lockitProjectID(const UUID& sessionId) const;
    std::optional<std::string> metadataPrefix(const UUID& sessionId) const;
    std::optional<std::string> folderOfOpenSession() const;

    /// The present settings into the open session's folder, if it lies in one.
    void captureSettings();
    /// Applies those of the session's folder; false where none has another value by it.
    bool applySettings(const UUID& sessionId);
    /// Keys of the settings that another value came for with the folder of the session that was opened last.
    /// Observable as SessionField::settingsOfFolder, notified only where there are some.
    const std::vector<std::string>& appliedSettings() const { return appliedSettings_; }

  private:
    const FolderInfo* folderOf(const UUID& sessionId) const;

    const SessionStatus& sessions_;
    const std::shared_ptr<SessionFolderList> folders_;
    const std::shared_ptr<FolderSettings> settings_;
    const Decide decide_;
    std::vector<std::string> appliedSettings_;
};

} // namespace orvane
