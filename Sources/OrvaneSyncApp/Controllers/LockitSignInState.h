#pragma once

#include <optional>
#include <string>

namespace orvane {

/// Who is signed in to LockitNetwork, as far as this process knows.
struct LockitSignInState {
    bool isSignedIn = false;
    bool isKeyStoreLocked = false; ///< it keeps a sign-in that it does not show until it is unlocked
    bool isRefreshRefused = false; ///< the service does not renew the token: only a new sign-in helps
    bool isAuthenticating = false;
    std::optional<std::string> lastError;    ///< of the last sign-in; absent while another is under way
    std::optional<std::string> accountEmail; ///< what the user knows the account by
};

} // namespace orvane
