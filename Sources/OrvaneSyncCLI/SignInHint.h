#pragma once

#include "OrvaneSyncApp/Controllers/LockitOAuthService.h"

#include <string>

namespace orvane::cli {

/// Appended to the message of a failed request: what to do if the service has refused to renew the token.
/// Else empty.
inline std::string signInHint(const LockitOAuthService& account) {
    return account.state().isRefreshRefused ? " (sign in again: orvanesync lockit sign-in)" : "";
}

} // namespace orvane::cli
