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

/// The folder of each session, and what the session has from it. To see changes by another process, call
/// `SessionManager::loadSessionList` first. Interface thread.
class SessionPlaces {
  public:
    using Decide = std::function<platform::Task(const UUID&, SessionInfoChange)>;
    /// `sessions` outlives this object. `decide` changes a session; its task ends as that of
    /// `SessionManager::save`.
    SessionPlaces(const SessionStatus& sessions, std::shared_ptr<SessionFolderList> folders,
                  std::shared_ptr<FolderSettings> settings, Decide decide);

    /// Blank: removes the session from its folder.
    platform::Task setFolder(const UUID& sessionId, const std::optional<std::string>& folder) const;

    /// Including folders that only sessions name; ascending.
    std::vector<std::string> folderNames() const;
    /// False for a blank name or one that is taken.
    bool createFolder(std::string_view name);
    /// Its sessions move with it. False for a blank name or one that is taken.
    bool renameFolder(std::string from, std::string_view to);
    /// Does nothing if a session is in it.
    void deleteEmptyFolder(const std::string& name);

    std::optional<std::string> lockitProjectID(const UUID& sessionId) const;
    std::optional<std::string> metadataPrefix(const UUID& sessionId) const;
    std::optional<std::string> folderOfOpenSession() const;

    /// Stores the present settings in the open session's folder, if it has one.
    void captureSettings();
    /// Applies those of the session's folder; false if this changes no value.
    bool applySettings(const UUID& sessionId);
    /// Keys of the settings that changed when the folder of the most recently opened session was applied.
    /// Observable as SessionField::settingsOfFolder, which is notified only if there are some.
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
