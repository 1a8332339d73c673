#pragma once

#include "OrvaneSyncApp/Controllers/LockitOAuthService.h"
#include "OrvaneSyncCore/Services/Network/LockitRecords.h"

#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// What the sign-in shows, and which of its controls there are.
struct AccountPanel {
    std::string state; ///< such as the account's address
    bool isSignedIn = false;
    bool canSignIn = false;
    bool canCancel = false; ///< the browser is open; a callback may be pasted too
    std::string problem{};  ///< for people; empty: none
};
AccountPanel accountPanel(const LockitOAuthService& account);

/// What the badge of a folder says of its project. `projects`: those of the account, as far as they are
/// loaded.
std::string folderBadge(const std::optional<std::string>& projectID, bool isSignedIn,
                        const std::vector<LockitProject>& projects);

/// Where the project of a folder is chosen.
namespace projectPicker {
extern const char* const notSignedIn;
extern const char* const noProjects;
} // namespace projectPicker

} // namespace orvane
