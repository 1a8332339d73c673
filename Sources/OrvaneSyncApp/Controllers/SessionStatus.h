#pragma once

#include "OrvaneSyncApp/Controllers/OpenSession.h"
#include "OrvaneSyncApp/Controllers/SessionList.h"
#include "Platform/Listeners.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// Which part of the sessions has changed.
enum class SessionField : std::uint8_t {
    sessions,
    currentSessionId,
    lastSaveError,
    problem,
    folderInfos,
    settingsOfFolder
};

/// What people see of the sessions; only the session manager changes it. Each getter is observable. Interface
/// thread, and asserts so.
class SessionStatus {
  public:
    SessionStatus(const SessionStatus&) = delete;
    SessionStatus& operator=(const SessionStatus&) = delete;

    const SessionList& list() const { return list_; }
    const std::vector<SessionInfo>& sessions() const { return list_.all(); }
    const SessionInfo* session(const UUID& sessionId) const { return list_.find(sessionId); }
    /// The open session; absent: nothing is saved.
    const std::optional<UUID>& currentSessionId() const { return open_.id; }
    const SessionInfo* currentSession() const { return open_.id ? session(*open_.id) : nullptr; }
    /// Whether the open session has clips on the disk and its folders there have nothing in common with these
    /// (`OpenSession::isElsewhere`).
    bool keepsClipsFromElsewhere(const std::vector<FileURL>& folders) const;
    /// Why the last writing of a session or of the list of folders failed; absent once all are written.
    const std::optional<std::string>& lastSaveError() const { return lastSaveError_; }
    /// A message for people: what of the open session or of the list of folders can't be read, that another
    /// program has deleted the session, or which file was kept.
    const std::optional<std::string>& problem() const { return problem_; }
    /// Calls back after every change, on the interface thread.
    platform::Subscription onChange(std::function<void(SessionField)> callback);

  protected:
    SessionStatus(std::shared_ptr<platform::MainThread> mainThread, SessionList list)
        : mainThread_(std::move(mainThread)), list_(std::move(list)) {}
    ~SessionStatus() = default;

    void assertOnMainThread() const;
    void notify(SessionField field) const { listeners_.notify(field); }
    void setLastSaveError(std::optional<std::string> failure);
    void setProblem(std::optional<std::string> problem);

    const std::shared_ptr<platform::MainThread> mainThread_;
    platform::Listeners<SessionField> listeners_;
    SessionList list_;
    OpenSession open_;

  private:
    std::optional<std::string> lastSaveError_, problem_;
};

} // namespace orvane
