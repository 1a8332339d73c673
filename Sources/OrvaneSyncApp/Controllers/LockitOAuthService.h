#pragma once

#include "OrvaneSyncApp/Controllers/LockitSignInState.h"
#include "OrvaneSyncApp/Controllers/SignInStore.h"
#include "OrvaneSyncCore/Services/Network/LockitNetworkClient.h"
#include "OrvaneSyncCore/Services/Persistence/ServiceConfiguration.h"
#include "Platform/BrowserSession.h"
#include "Platform/Listeners.h"
#include "Platform/MainThread.h"
#include "Platform/SharedWait.h"
#include "Platform/Task.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace orvane {

/// Signs the user in to LockitNetwork in the browser, keeps the tokens in the key store, refreshes them ahead
/// of their end, and gives every client its access token.
///
/// Lives on the interface thread; the key store, the network and the browser are waited for elsewhere. Held
/// by a shared pointer, as that work holds it weakly.
class LockitOAuthService : public std::enable_shared_from_this<LockitOAuthService> {
  public:
    struct Dependencies {
        std::shared_ptr<platform::MainThread> mainThread;
        /// Shows the page; see BrowserSession.
        std::function<bool(const std::string& url)> openPage = nullptr;
        std::shared_ptr<const platform::Clock> clock = platform::systemClock();
        // Null or absent: those of this installation.
        std::shared_ptr<platform::HTTPClient> http = nullptr;
        std::shared_ptr<platform::CredentialStore> credentials = nullptr;
        std::shared_ptr<platform::BrowserSession> browser = nullptr;
        std::optional<ServiceConfiguration> configuration = {};
    };
    /// Begins to look up who is signed in.
    static std::shared_ptr<LockitOAuthService> create(Dependencies dependencies);
    ~LockitOAuthService();

    static constexpr const char* redirectURI = "orvane-tandrel://oauth/callback";
    static constexpr const char* callbackURLScheme = "orvane-tandrel";

    /// Observable. It holds from the end of `ready` on.
    const LockitSignInState& state() const { return state_; }
    platform::Task ready() const { return *ready_; }
    /// The same for an operation that can be stopped without stopping it for others: `co_await` it.
    auto readiness() const { return platform::shared(*ready_, mainThread_); }
    const ServiceConfiguration& configuration() const { return configuration_; }
    platform::Subscription onChange(std::function<void()> callback);

    /// Ends when the user has come back from the browser and the tokens are kept. Fails with OAuthError,
    /// ServiceNotConfigured, BrowserSessionError or an error of the transport; what was kept before stays
    /// then. A call while one waits waits for the same.
    platform::Task signIn();
    /// A callback that was pasted; false where no sign-in waits, or for an address of another scheme.
    bool completeSignIn(const std::string& callbackURL);
    /// Ends a sign-in that waits.
    void cancelSignIn();
    /// Forgets the tokens and the account. Fails with platform::CredentialError where the key store may have
    /// kept them.
    platform::Task signOut();
    /// Leaves a valid token; refreshes it where it ends within a minute, once for all that wait. Fails with
    /// OAuthError and what the transport fails with; the tokens stay then.
    platform::Task currentBearerToken(std::shared_ptr<platform::Secret> token);
    /// Looks into the key store; then `state` says what it holds.
    platform::Task revalidateSignInState();
    /// Asks the service for the account's text. Never fails.
    platform::Task refreshAccountEmail();
    /// The refresh of the account's text that a sign-in or the start has begun; ended where there is none.
    platform::Task accountEmailRefreshed() const { return accountEmailRefreshed_; }

    /// A new client of the configured service; throws ServiceNotConfigured.
    LockitNetworkClient makeClient();

  private:
    explicit LockitOAuthService(Dependencies dependencies);
    using Weak = std::weak_ptr<LockitOAuthService>;

    static platform::Task start(Weak weak);
    static platform::Task authenticate(Weak weak);
    static platform::Task exchange(Weak weak);
    static platform::Task show(Weak weak, std::string url, std::shared_ptr<std::string> callback);
    static platform::Task requestTokens(Weak weak, oauth::Fields fields,
                                        std::shared_ptr<oauth::TokenResponse> response);
    static platform::Task persist(Weak weak, std::shared_ptr<oauth::TokenResponse> response);
    static platform::Task requireReadableStore(Weak weak);
    static platform::Task bearer(Weak weak, std::shared_ptr<platform::Secret> token);
    static platform::Task refresh(Weak weak);
    static platform::Task revalidate(Weak weak);
    static platform::Task askForAccountEmail(Weak weak);
    void takeState(const StoredSignIn& kept);
    void setAccountEmail(const std::optional<std::string>& email);
    double now() const; ///< seconds since 1970

    const std::shared_ptr<platform::MainThread> mainThread_;
    const std::shared_ptr<const platform::Clock> clock_;
    std::shared_ptr<platform::HTTPClient> http_;
    const std::shared_ptr<platform::BrowserSession> browser_;
    const bool needsConfiguration_;
    ServiceConfiguration configuration_;
    platform::Listeners<> listeners_;

    LockitSignInState state_;
    std::optional<platform::Task> ready_;
    std::optional<platform::Task> signingIn_;
    std::optional<platform::Task> refreshing_;
    platform::Task accountEmailRefreshed_ = platform::Task::ended();
    platform::RunningTasks running_;
    std::uint64_t refreshes_ = 0; ///< that have ended well
    /// Raised by every sign-in and sign-out: tokens that were asked for before are no longer wanted.
    std::uint64_t generation_ = 0;
    // Last: they are waited for before all else goes.
    const SignInStore signIn_;
    const std::unique_ptr<platform::SerialQueue> browsing_; ///< a sign-in waits here
    const std::unique_ptr<platform::SerialQueue> requesting_;
};

} // namespace orvane
