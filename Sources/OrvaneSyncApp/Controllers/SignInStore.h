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

/// What the key store keeps of a sign-in.
struct StoredSignIn {
    std::optional<platform::Secret> accessToken;
    std::optional<platform::Secret> refreshToken;
    std::optional<double> expiresAt; ///< of the access token, seconds since 1970
    std::optional<std::string> accountEmail;
    bool isLocked = false; ///< there is more, which the store does not show

    /// Whether the access token ends within a minute; also where its end is not known.
    bool isExpired(double now) const;
    OAuthError missing() const;
};

/// The sign-in to LockitNetwork in the key store. Every operation begins at once and ends when the store has
/// answered, which is waited for on a queue of its own, in order. Interface thread. Destroying it waits for
/// what is under way.
class SignInStore {
  public:
    SignInStore(std::shared_ptr<platform::CredentialStore> store,
                std::shared_ptr<platform::MainThread> mainThread);

    platform::Task read(std::shared_ptr<StoredSignIn> signIn, platform::CredentialStore::Asking asking) const;
    /// Fails with OAuthError where the access token could not be kept. What else can't be written makes a
    /// later refresh necessary, or impossible.
    platform::Task keep(std::shared_ptr<const oauth::TokenResponse> tokens, double expiresAt) const;
    /// Never fails: it is asked for again at the next start.
    platform::Task keepAccountEmail(std::string text) const;
    /// Fails with platform::CredentialError.
    platform::Task forget() const;

  private:
    platform::Task run(std::function<void(platform::CredentialStore&)> work) const;

    const std::shared_ptr<platform::CredentialStore> store_;
    const std::shared_ptr<platform::MainThread> mainThread_;
    const std::unique_ptr<platform::SerialQueue> queue_; // last: it is waited for before all else goes
};

} // namespace orvane
