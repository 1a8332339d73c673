#pragma once

#include <optional>
#include <string>

namespace orvane {

/// Who is signed in to LockitNetwork, as far as this process knows.
struct LockitSignInState {
    bool isSignedIn = false;
    bool isKeyStoreLocked = false; ///< the key store has a sign-in that it shows only after it is unlocked
    bool isRefreshRefused = false; ///< the service refuses to renew the token: only a new sign-in helps
    bool isAuthenticating = false;
    std::optional<std::string> lastError;    ///< of the last sign-in; absent while another one runs
    std::optional<std::string> accountEmail; ///< the text by which the user recognises the account
};

} // namespace orvane
