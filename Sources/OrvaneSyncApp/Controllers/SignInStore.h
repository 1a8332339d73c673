#pragma once

#include "OrvaneSyncApp/Controllers/OAuthError.h"
#include "OrvaneSyncApp/Controllers/OAuthForms.h"
#include "Platform/CredentialStore.h"
#include "Platform/MainThread.h"
#include "Platform/Task.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace orvane {

/// The parts of a sign-in that the key store keeps.
struct StoredSignIn {
    std::optional<platform::Secret> accessToken;
    std::optional<platform::Secret> refreshToken;
    std::optional<double> expiresAt; ///< of the access token, seconds since 1970
    std::optional<std::string> accountEmail;
    bool isLocked = false; ///< there are more, which the store does not show

    /// Whether the access token expires within a minute; also true if its expiry is not known.
    bool isExpired(double now) const;
    OAuthError missing() const;
};

/// The sign-in to LockitNetwork in the key store. Every operation begins at once and ends when the store has
/// answered; a queue waits for the answers, in order. Interface thread. The destructor waits for running
/// operations.
class SignInStore {
  public:
    SignInStore(std::shared_ptr<platform::CredentialStore> store,
                std::shared_ptr<platform::MainThread> mainThread);

    platform::Task read(std::shared_ptr<StoredSignIn> signIn, platform::CredentialStore::Asking asking) const;
    /// Fails with OAuthError if the access token could not be stored. If another part can't be written, a
    /// later refresh becomes necessary, or impossible.
    platform::Task keep(std::shared_ptr<const oauth::TokenResponse> tokens, double expiresAt) const;
    /// Never fails: the text is requested again at the next start.
    platform::Task keepAccountEmail(std::string text) const;
    /// Fails with platform::CredentialError.
    platform::Task forget() const;

  private:
    platform::Task run(std::function<void(platform::CredentialStore&)> work) const;

    const std::shared_ptr<platform::CredentialStore> store_;
    const std::shared_ptr<platform::MainThread> mainThread_;
    // Last member: it is destroyed first, which waits for its work.
    const std::unique_ptr<platform::SerialQueue> queue_;
};

} // namespace orvane
