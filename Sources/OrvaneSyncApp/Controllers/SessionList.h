#pragma once

#include "OrvaneSyncCore/Services/Persistence/SessionRecords.h"

#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// The sessions as this process shows them, most recently modified first. Interface thread.
class SessionList {
  public:
    explicit SessionList(std::vector<SessionInfo> sessions) : sessions_(std::move(sessions)) {}

    const std::vector<SessionInfo>& all() const { return sessions_; }
    /// Null if there is none.
    const SessionInfo* find(const UUID& id) const;
    /// The ids of those in a folder.
    std::vector<UUID> idsIn(const std::string& folder) const;
    /// The folder's name and the next shooting day, such as "Dreh DT 008"; absent without a folder.
    std::optional<std::string> suggestedName(const UUID& id) const;

    /// Replaces the session with the same id, if there is one.
    void place(SessionInfo info);
    void remove(const UUID& id);

  private:
    std::vector<SessionInfo> sessions_;
};

} // namespace orvane
