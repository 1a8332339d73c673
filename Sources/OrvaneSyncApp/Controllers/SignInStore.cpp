#include "OrvaneSyncApp/Controllers/SignInStore.h"

#include "Platform/JSON.h"
#include "Platform/OnQueue.h"
#include "Platform/Text.h"

#include <utility>

namespace orvane {

using platform::CredentialStore;
using platform::Secret;
using platform::Task;

namespace {

constexpr const char* accessTokenItem = "lockit.accessToken";
constexpr const char* refreshTokenItem = "lockit.refreshToken";
constexpr const char* expiresAtItem = "lockit.expiresAt";
constexpr const char* accountEmailItem = "lockit.accountEmail";

constexpr double expirySlack = 60; ///< a token is refreshed so many seconds before it expires

void saveIfPossible(CredentialStore& store, const char* item, const Secret& value) {
    try {
        store.save(item, value);
    } catch (const platform::CredentialError&) { // only the access token must be stored
    }
}

/// A separate coroutine, because the store may be destroyed while it waits; the queue runs the work to its
/// end before.
template <class Running>
Task endOf(Running running) {
    co_await running;
}

} // namespace

bool StoredSignIn::isExpired(double now) const { return !expiresAt || *expiresAt <= now + expirySlack; }

OAuthError StoredSignIn::missing() const {
    return OAuthError(isLocked ? OAuthError::Kind::keyStoreLocked : OAuthError::Kind::notSignedIn);
}

SignInStore::SignInStore(std::shared_ptr<CredentialStore> store,
                         std::shared_ptr<platform::MainThread> mainThread)
    : store_(std::move(store)), mainThread_(std::move(mainThread)),
      queue_(platform::SerialQueue::create("key store")) {}

Task SignInStore::run(std::function<void(CredentialStore&)> work) const {
    return endOf(
        platform::onQueue(*queue_, mainThread_, [store = store_, work = std::move(work)] { work(*store); }));
}

Task SignInStore::read(std::shared_ptr<StoredSignIn> signIn, CredentialStore::Asking asking) const {
    return run([signIn = std::move(signIn), asking](CredentialStore& store) {
        const auto found =
            store.read({accessTokenItem, refreshTokenItem, expiresAtItem, accountEmailItem}, asking);
        const auto text = [&](const char* item) {
            const auto value = found.value(item);
            return value ? std::optional(value->reveal()) : std::nullopt;
        };
        signIn->accessToken = found.value(accessTokenItem);
        signIn->refreshToken = found.value(refreshTokenItem);
        signIn->expiresAt = platform::text::decimalNumber(text(expiresAtItem).value_or(""));
        signIn->accountEmail = text(accountEmailItem);
        signIn->isLocked = found.isLocked;
    });
}

Task SignInStore::keep(std::shared_ptr<const oauth::TokenResponse> tokens, double expiresAt) const {
    return run([tokens = std::move(tokens), expiresAt](CredentialStore& store) {
        try {
            store.save(accessTokenItem, tokens->accessToken);
        } catch (const platform::CredentialError&) {
            throw OAuthError(OAuthError::Kind::keychainWriteFailed);
        }
        if (!tokens->refreshToken.empty()) saveIfPossible(store, refreshTokenItem, tokens->refreshToken);
        saveIfPossible(store, expiresAtItem, Secret(platform::JSON(expiresAt).dump()));
    });
}

Task SignInStore::keepAccountEmail(std::string text) const {
    return run([text = std::move(text)](CredentialStore& store) {
        saveIfPossible(store, accountEmailItem, Secret(text));
    });
}

Task SignInStore::forget() const {
    return run([](CredentialStore& store) {
        store.remove({accessTokenItem, refreshTokenItem, expiresAtItem, accountEmailItem});
    });
}

} // namespace orvane
