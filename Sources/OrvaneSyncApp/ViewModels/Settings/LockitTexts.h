#pragma once

#include "OrvaneSyncApp/Controllers/LockitOAuthService.h"
#include "OrvaneSyncCore/Services/Network/LockitRecords.h"

#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// The texts of the sign-in, and which of its controls are shown.
struct AccountPanel {
    std::string state; ///< such as the account's address
    bool isSignedIn = false;
    bool canSignIn = false;
    bool canCancel = false; ///< the browser is open; a callback may also be pasted
    std::string problem{};  ///< shown to the user; empty: none
};
AccountPanel accountPanel(const LockitOAuthService& account);

/// The text of a folder's badge about its project. `projects`: the account's projects, as far as they are
/// loaded.
std::string folderBadge(const std::optional<std::string>& projectID, bool isSignedIn,
                        const std::vector<LockitProject>& projects);

/// The texts of the control that chooses a folder's project.
namespace projectPicker {
extern const char* const notSignedIn;
extern const char* const noProjects;
} // namespace projectPicker

} // namespace orvane
