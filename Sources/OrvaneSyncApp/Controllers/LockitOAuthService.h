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

/// Signs the user in to LockitNetwork in the browser, keeps the tokens in the key store, refreshes them
/// before they expire, and gives every client its access token.
///
/// Lives on the interface thread; other threads wait for the key store, the network and the browser. Held by
/// a shared pointer, because that work holds a weak one.
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
    /// Starts looking up who is signed in.
    static std::shared_ptr<LockitOAuthService> create(Dependencies dependencies);
    ~LockitOAuthService();

    static constexpr const char* redirectURI = "orvane-tandrel://oauth/callback";
    static constexpr const char* callbackURLScheme = "orvane-tandrel";

    /// Observable. Valid from the end of `ready` on.
    const LockitSignInState& state() const { return state_; }
    platform::Task ready() const { return *ready_; }
    /// The same for an operation that can be stopped without stopping the wait of others: `co_await` it.
    auto readiness() const { return platform::shared(*ready_, mainThread_); }
    const ServiceConfiguration& configuration() const { return configuration_; }
    platform::Subscription onChange(std::function<void()> callback);

    /// Ends when the user has come back from the browser and the tokens are stored. Fails with OAuthError,
    /// ServiceNotConfigured, BrowserSessionError or an error of the transport; the earlier tokens are kept
    /// then. A call while a sign-in waits also waits for that one.
    platform::Task signIn();
    /// Passes on a callback address that the user pasted; false if no sign-in waits, or for an address of
    /// another scheme.
    bool completeSignIn(const std::string& callbackURL);
    /// Ends a sign-in that waits.
    void cancelSignIn();
    /// Deletes the tokens and the account. Fails with platform::CredentialError if the key store may still
    /// have them.
    platform::Task signOut();
    /// Writes a valid token to `token`. Refreshes it if it expires within a minute, once for all callers that
    /// wait. Fails with OAuthError and the errors of the transport; the tokens are kept then.
    platform::Task currentBearerToken(std::shared_ptr<platform::Secret> token);
    /// Reads the key store; `state` is up to date after that.
    platform::Task revalidateSignInState();
    /// Requests the account's text from the service. Never fails.
    platform::Task refreshAccountEmail();
    /// The refresh of the account's text that a sign-in or the start of the program began; an ended task if
    /// there is none.
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
    std::uint64_t refreshes_ = 0; ///< that succeeded
    /// Raised by every sign-in and sign-out: the result of an earlier token request is discarded.
    std::uint64_t generation_ = 0;
    // Last members: they are destroyed first, which waits for their work.
    const SignInStore signIn_;
    const std::unique_ptr<platform::SerialQueue> browsing_; ///< a sign-in waits here
    const std::unique_ptr<platform::SerialQueue> requesting_;
};

} // namespace orvane
