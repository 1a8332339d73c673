#pragma once

#include "OrvaneSyncApp/Controllers/LockitOAuthService.h"
#include "OrvaneSyncApp/Controllers/OpenWork.h"
#include "OrvaneSyncCore/Services/Network/LockitRecords.h"
#include "Platform/Task.h"

#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace orvane {

/// A request to LockitNetwork could not be answered. The description is the message for the screen that
/// asked.
class LockitRefusal : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Metadata of LockitNetwork for the clips of the open work. Interface thread.
class LockitController {
  public:
    explicit LockitController(OpenWork& work) : work_(work) {}

    // The state; any change of it notifies `ImportField::lockit`.

    bool isSyncingLockit() const { return isSyncingLockit_; }
    /// The result of the last sync, for people; absent before the first.
    const std::optional<std::string>& lockitSyncStatus() const { return lockitSyncStatus_; }
    /// The value of that text if no project was named.
    static const char* const noProject;
    /// The same for programs.
    enum class SyncEnd : std::uint8_t { none, matched, noMatches, failed };
    SyncEnd lastSyncEnd() const { return lastSyncEnd_; }
    /// Shooting days that the running sync has requested, and the number of days of the project.
    struct Progress {
        int day = 0;
        int days = 0;
    };
    const Progress& progress() const { return progress_; }

    /// Requests the metadata of every clip from the service, day by day, and applies it; the result is
    /// written to `lockitSyncStatus`. Days that were applied before a failure or a stop stay applied. All of
    /// it is one undo step, which changes only this metadata. Fails only with Stopped. A call while a sync
    /// runs waits for that sync. `projectID`: the project of the folder of the session; absent if there is
    /// none.
    platform::Task syncLockitNetwork(std::shared_ptr<LockitOAuthService> account,
                                     std::optional<std::string> projectID);

    // For choosing a project. Each fails with LockitRefusal or ServiceNotConfigured; if the service rejects a
    // token, the user is signed out.

    /// Sorted by name.
    static platform::Task loadProjects(std::shared_ptr<LockitOAuthService> account,
                                       std::shared_ptr<std::vector<LockitProject>> projects);
    static platform::Task loadShootingDays(std::shared_ptr<LockitOAuthService> account, std::string projectID,
                                           std::shared_ptr<std::vector<LockitShootingDay>> days);

  private:
    using Weak = std::weak_ptr<LockitController>;
    struct Sync; ///< one that runs

    static platform::Task sync(Weak weak, std::shared_ptr<LockitOAuthService> account,
                               std::optional<std::string> projectID);
    static platform::Task askDayByDay(Weak weak, std::shared_ptr<Sync> sync);
    static platform::Task matchDays(Weak weak, std::shared_ptr<Sync> sync,
                                    std::shared_ptr<const std::vector<LockitShootingDay>> days);
    static platform::Task applyDay(Weak weak, std::shared_ptr<Sync> sync,
                                   std::shared_ptr<ClipMatchResponse> response, std::string label);
    static platform::Task makeStep(Weak weak, std::shared_ptr<Sync> sync);
    void end(SyncEnd how, std::string status);
    void endFailed(const std::exception_ptr& raised);
    void endDone(const Sync& sync);

    OpenWork& work_;
    bool isSyncingLockit_ = false;
    std::optional<std::string> lockitSyncStatus_;
    SyncEnd lastSyncEnd_ = SyncEnd::none;
    Progress progress_;
    std::optional<platform::Task> syncing_;
};

} // namespace orvane
