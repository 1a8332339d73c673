#include "OrvaneSyncApp/Controllers/LockitOAuthService.h"

#include "OrvaneSyncCore/Models/UUID.h"
#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "OrvaneSyncCore/Utilities/Base64.h"
#include "Platform/InterfaceThread.h"
#include "Platform/OnQueue.h"
#include "Platform/Text.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <utility>

namespace orvane {

using platform::Secret;
using platform::Task;
using Asking = platform::CredentialStore::Asking;
using Kind = OAuthError::Kind;

namespace {

constexpr std::int64_t usualLifetime = 604800;
constexpr std::int64_t longestLifetime = 2592000;

std::shared_ptr<platform::BrowserSession> ownBrowser(std::function<bool(const std::string&)> open) {
    return platform::BrowserSession::create(
        {.callbackScheme = LockitOAuthService::callbackURLScheme, .open = std::move(open)});
}

/// The object of a coroutine, after a wait. If it was destroyed, the coroutine ends.
std::shared_ptr<LockitOAuthService> found(const std::weak_ptr<LockitOAuthService>& weak) {
    if (auto self = weak.lock()) return self;
    throw platform::Stopped();
}

/// The client's own credential, in the form that the token endpoint expects.
std::string basicAuthorization(const ServiceConfiguration& service) {
    return "Basic " + base64::encoded(*service.clientID + ":" + service.clientSecret.value_or(""));
}

} // namespace

std::shared_ptr<LockitOAuthService> LockitOAuthService::create(Dependencies dependencies) {
    std::shared_ptr<LockitOAuthService> service(new LockitOAuthService(std::move(dependencies)));
    service->ready_ = start(service);
    return service;
}

LockitOAuthService::LockitOAuthService(Dependencies dependencies)
    : mainThread_(std::move(dependencies.mainThread)), clock_(std::move(dependencies.clock)),
      http_(std::move(dependencies.http)),
      browser_(dependencies.browser ? std::move(dependencies.browser)
                                    : ownBrowser(std::move(dependencies.openPage))),
      needsConfiguration_(!dependencies.configuration),
      configuration_(dependencies.configuration.value_or(ServiceConfiguration())),
      signIn_(dependencies.credentials
                  ? std::move(dependencies.credentials)
                  : platform::CredentialStore::create(AppStorageHelper::credentialFile()),
              mainThread_),
      browsing_(platform::SerialQueue::create("browser")),
      requesting_(platform::SerialQueue::create("tokens")) {}

LockitOAuthService::~LockitOAuthService() { running_.requestStop(); }

platform::Subscription LockitOAuthService::onChange(std::function<void()> callback) {
    return listeners_.add(std::move(callback));
}

Task LockitOAuthService::start(Weak weak) {
    auto self = found(weak);
    // On a queue, because it reads a file and loads a library.
    auto loading = platform::onQueue(*self->requesting_, self->mainThread_,
                                     [loads = self->needsConfiguration_, makes = self->http_ == nullptr] {
                                         return std::pair(loads ? std::optional(ServiceConfiguration::load())
                                                                : std::nullopt,
                                                          makes ? platform::HTTPClient::create() : nullptr);
                                     });
    self.reset();
    auto [configuration, http] = co_await loading;
    self = found(weak);
    if (configuration) self->configuration_ = std::move(*configuration);
    if (http) self->http_ = std::move(http);
    self.reset();
    const auto kept = std::make_shared<StoredSignIn>();
    const Task reading = found(weak)->signIn_.read(kept, Asking::once);
    co_await reading;
    self = found(weak);
    self->takeState(*kept);
    if (self->state_.isSignedIn && !kept->accountEmail && self->configuration_.hasLockit())
        self->accountEmailRefreshed_ = self->running_.add(askForAccountEmail(weak));
}

// Signing in.

Task LockitOAuthService::signIn() {
    if (!signingIn_ || signingIn_->isDone()) signingIn_ = running_.add(authenticate(weak_from_this()));
    return *signingIn_;
}

bool LockitOAuthService::completeSignIn(const std::string& callbackURL) {
    return browser_->complete(callbackURL);
}

void LockitOAuthService::cancelSignIn() { browser_->cancel(); }

/// However the sign-in ends, the observers see that it has ended.
Task LockitOAuthService::authenticate(Weak weak) {
    auto self = found(weak);
    self->state_.isAuthenticating = true;
    self->state_.lastError.reset();
    self->listeners_.notify();
    const Task exchanging = exchange(weak);
    self.reset();
    std::exception_ptr raised;
    std::optional<std::string> why;
    try {
        co_await exchanging;
    } catch (const std::exception& error) {
        raised = std::current_exception();
        why = error.what();
    } catch (...) { // it was stopped
        raised = std::current_exception();
    }
    self = weak.lock();
    if (self) {
        self->state_.isAuthenticating = false;
        self->state_.lastError = std::move(why);
        self->listeners_.notify();
    }
    if (raised) std::rethrow_exception(raised);
}

Task LockitOAuthService::exchange(Weak weak) {
    auto self = found(weak);
    auto gettingReady = self->readiness();
    self.reset();
    co_await gettingReady;
    const ServiceConfiguration service = found(weak)->configuration_;
    service.requireLockit();
    const Task looking = requireReadableStore(weak);
    co_await looking;
    self = found(weak);
    // On a queue, because the hash function is in a library that may have to be loaded.
    auto proving =
        platform::onQueue(*self->requesting_, self->mainThread_, [] { return oauth::PKCE::generate(); });
    self.reset();
    const auto proof = co_await proving;
    const std::string state = UUID::random().text();
    const std::string url = *service.baseURL + "/oauth/authorize?" +
                            oauth::form({{"response_type", "code"},
                                         {"client_id", *service.clientID},
                                         {"state", state},
                                         {"redirect_uri", redirectURI},
                                         {"code_challenge", proof.challenge},
                                         {"code_challenge_method", "S256"}});
    const auto callback = std::make_shared<std::string>();
    const Task showing = show(weak, url, callback);
    co_await showing;
    if (callback->empty()) throw OAuthError(Kind::unknown);
    const auto answered = oauth::queryItem(*callback, "state");
    if (!answered || Secret(*answered) != Secret(state)) throw OAuthError(Kind::stateMismatch);
    const auto code = oauth::queryItem(*callback, "code");
    if (!code || code->empty()) throw OAuthError(Kind::missingAuthCode);

    const auto response = std::make_shared<oauth::TokenResponse>();
    const Task requesting = requestTokens(weak,
                                          {{"grant_type", "authorization_code"},
                                           {"code", *code},
                                           {"redirect_uri", redirectURI},
                                           {"code_verifier", proof.verifier.reveal()}},
                                          response);
    co_await requesting;
    ++found(weak)->generation_;
    const Task keeping = persist(weak, response);
    co_await keeping;
    const Task revalidating = revalidate(weak);
    co_await revalidating;
    self = found(weak);
    if (!self->state_.isSignedIn) throw OAuthError(Kind::keychainWriteFailed);
    self->accountEmailRefreshed_ = self->running_.add(askForAccountEmail(weak));
}

/// Refuses to sign in while the store is locked. Otherwise the new sign-in would be used only until the store
/// is unlocked, and then the stored one.
Task LockitOAuthService::requireReadableStore(Weak weak) {
    const auto kept = std::make_shared<StoredSignIn>();
    const Task reading = found(weak)->signIn_.read(kept, Asking::again);
    co_await reading;
    if (!kept->isLocked) co_return;
    found(weak)->takeState(*kept);
    throw kept->missing();
}

Task LockitOAuthService::show(Weak weak, std::string url, std::shared_ptr<std::string> callback) {
    auto self = found(weak);
    auto showing = platform::onQueue(
        *self->browsing_, self->mainThread_,
        [browser = self->browser_, url](const std::stop_token& stop) { return browser->run(url, stop); });
    self.reset();
    try {
        *callback = co_await showing;
    } catch (const platform::BrowserSessionError& error) {
        if (error.kind() != platform::BrowserSessionError::Kind::cancelled) throw;
        throw OAuthError(Kind::userCancelled);
    }
}

Task LockitOAuthService::requestTokens(Weak weak, oauth::Fields fields,
                                       std::shared_ptr<oauth::TokenResponse> response) {
    auto self = found(weak);
    platform::HTTPRequest request;
    request.method = "POST";
    request.url = *self->configuration_.baseURL + "/oauth/access-token";
    request.headers = {{"Content-Type", "application/x-www-form-urlencoded"},
                       {"Accept", "application/json"},
                       {"Authorization", basicAuthorization(self->configuration_)}};
    request.body = oauth::form(fields);
    auto sending = platform::onQueue(
        *self->requesting_, self->mainThread_,
        [http = self->http_, request = std::move(request), fields = std::move(fields),
         secret = Secret(self->configuration_.clientSecret.value_or("")),
         response = std::move(response)](const std::stop_token& stop) mutable {
            constexpr int good = 200;
            platform::HTTPResponse answer;
            try {
                answer = http->send(request, stop);
            } catch (const platform::HTTPError& error) {
                if (error.kind() == platform::HTTPError::Kind::notHTTP)
                    throw OAuthError::tokenRequestFailed(0, "");
                throw;
            }
            if (answer.status != good) {
                std::vector<std::string_view> sent{secret.reveal(), request.headers.back().second};
                for (const auto& [name, value] : fields)
                    if (name != "grant_type" && name != "redirect_uri") sent.push_back(value);
                throw OAuthError::tokenRequestFailed(answer.status, oauth::withoutSecrets(answer.body, sent));
            }
            understand([&] { *response = oauth::decodedTokens(answer.body); });
            Secret::wipe(answer.body);
            Secret::wipe(request.body);
        });
    self.reset();
    co_await sending;
}

Task LockitOAuthService::persist(Weak weak, std::shared_ptr<oauth::TokenResponse> response) {
    auto self = found(weak);
    const std::int64_t lifetime =
        std::min(response->expiresInSeconds.value_or(usualLifetime), longestLifetime);
    const Task keeping = self->signIn_.keep(std::move(response), self->now() + static_cast<double>(lifetime));
    self.reset();
    co_await keeping;
    found(weak)->state_.isRefreshRefused = false;
}

// Tokens.

Task LockitOAuthService::currentBearerToken(std::shared_ptr<Secret> token) {
    return bearer(weak_from_this(), std::move(token));
}

Task LockitOAuthService::bearer(Weak weak, std::shared_ptr<Secret> token) {
    auto self = found(weak);
    const std::uint64_t generation = self->generation_;
    auto gettingReady = self->readiness();
    self.reset();
    co_await gettingReady;
    for (bool isRefreshed = false;; isRefreshed = true) {
        const auto kept = std::make_shared<StoredSignIn>();
        const std::uint64_t refreshesBefore = found(weak)->refreshes_;
        const Task reading = found(weak)->signIn_.read(kept, Asking::once);
        co_await reading;
        self = found(weak);
        if (self->generation_ != generation) throw OAuthError(Kind::notSignedIn);
        if (!kept->accessToken) {
            self->takeState(*kept);
            throw kept->missing();
        }
        // A token that was just made is returned even if the store says that it has expired.
        if (isRefreshed || !kept->isExpired(self->now())) {
            *token = std::move(*kept->accessToken);
            co_return;
        }
        // Another caller may have refreshed the token while the store was read.
        if (self->refreshes_ != refreshesBefore) continue;
        if (!self->refreshing_ || self->refreshing_->isDone())
            self->refreshing_ = self->running_.add(refresh(weak));
        auto refreshing = platform::shared(*self->refreshing_, self->mainThread_);
        self.reset();
        co_await refreshing;
    }
}

/// Continues even if all tasks that wait for it have given up, because the service may already have made the
/// old refresh token useless.
Task LockitOAuthService::refresh(Weak weak) {
    const auto kept = std::make_shared<StoredSignIn>();
    const Task reading = found(weak)->signIn_.read(kept, Asking::once);
    co_await reading;
    if (!kept->refreshToken) throw kept->missing();
    auto self = found(weak);
    self->configuration_.requireLockit();
    const std::uint64_t generation = self->generation_;
    self.reset();
    const auto response = std::make_shared<oauth::TokenResponse>();
    const Task requesting = requestTokens(
        weak, {{"grant_type", "refresh_token"}, {"refresh_token", kept->refreshToken->reveal()}}, response);
    try {
        co_await requesting;
    } catch (const OAuthError& error) {
        constexpr int badRequest = 400, unauthorized = 401; // the statuses for a grant that is not valid
        self = weak.lock();
        if (self && (error.status() == badRequest || error.status() == unauthorized)) {
            self->state_.isRefreshRefused = true;
            self->listeners_.notify();
        }
        throw;
    }
    if (found(weak)->generation_ != generation) throw OAuthError(Kind::notSignedIn);
    const Task keeping = persist(weak, response);
    co_await keeping;
    ++found(weak)->refreshes_;
}

Task LockitOAuthService::signOut() {
    ++generation_;
    state_.isRefreshRefused = false;
    takeState({});
    return running_.add(signIn_.forget());
}

Task LockitOAuthService::revalidateSignInState() { return revalidate(weak_from_this()); }

Task LockitOAuthService::revalidate(Weak weak) {
    const auto kept = std::make_shared<StoredSignIn>();
    const Task reading = found(weak)->signIn_.read(kept, Asking::once);
    co_await reading;
    found(weak)->takeState(*kept);
}

// The account.

Task LockitOAuthService::refreshAccountEmail() {
    accountEmailRefreshed_ = running_.add(askForAccountEmail(weak_from_this()));
    return accountEmailRefreshed_;
}

Task LockitOAuthService::askForAccountEmail(Weak weak) {
    auto self = found(weak);
    if (!self->state_.isSignedIn) co_return;
    const auto user = std::make_shared<LockitUser>();
    const std::uint64_t generation = self->generation_;
    try {
        const Task asking = self->makeClient().currentUser(user);
        self.reset();
        co_await asking;
    } catch (...) { // the account is then shown without its address
        co_return;
    }
    self = found(weak);
    const std::string email = user->email.value_or("");
    const std::string text = platform::text::trimmed(email).empty() ? user->login.value_or("") : email;
    if (text.empty() || self->generation_ != generation) co_return;
    self->setAccountEmail(text);
    const Task keeping = self->signIn_.keepAccountEmail(text);
    self.reset();
    co_await keeping;
}

LockitNetworkClient LockitOAuthService::makeClient() {
    configuration_.requireLockit();
    return LockitNetworkClient({mainThread_, http_, *configuration_.baseURL,
                                [weak = weak_from_this()](std::shared_ptr<Secret> token) {
                                    return bearer(weak, std::move(token));
                                }});
}

// State.

/// The account's address may be known here although it is not stored.
void LockitOAuthService::takeState(const StoredSignIn& kept) {
    const bool isSignedIn = kept.accessToken.has_value(), isLocked = !isSignedIn && kept.isLocked;
    const bool isOther = isSignedIn != state_.isSignedIn || isLocked != state_.isKeyStoreLocked;
    state_.isSignedIn = isSignedIn;
    state_.isKeyStoreLocked = isLocked;
    if (isOther) listeners_.notify();
    if (!isSignedIn || kept.accountEmail) setAccountEmail(isSignedIn ? kept.accountEmail : std::nullopt);
}

void LockitOAuthService::setAccountEmail(const std::optional<std::string>& email) {
    if (std::exchange(state_.accountEmail, email) != email) listeners_.notify();
}

double LockitOAuthService::now() const {
    return std::chrono::duration<double>(clock_->date().time_since_epoch()).count();
}

} // namespace orvane
