#pragma once

#include "Platform/Secret.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::platform {

/// A secret could not be kept. The description says where and why; it does not contain the secret.
class CredentialError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Keeps secrets of this program for the user account, each under an account name. A call may wait until the
/// user has answered a request to unlock the store, so never call it on the interface thread. Any other
/// thread.
class CredentialStore {
  public:
    using Accounts = std::vector<std::string>;

    /// The secrets that are kept under the requested accounts.
    struct Found {
        std::map<std::string, Secret, std::less<>> values;
        /// The store is locked and keeps at least one more of the secrets, which it shows only when it is
        /// unlocked.
        bool isLocked = false;

        /// Nothing where no secret is kept or none can be read.
        std::optional<Secret> value(std::string_view account) const;
    };
    /// How often the desktop asks the user to unlock a store that keeps the requested secrets.
    enum class Asking {
        once, ///< unless the user has refused before and the store was not unlocked since
        again ///< because the user asked for something that needs the secret
    };

    virtual ~CredentialStore() = default;

    /// Replaces the secret that is kept under that name. Throws CredentialError.
    virtual void save(const std::string& account, const Secret& value) = 0;
    /// Reads all accounts in one query.
    virtual Found read(const Accounts& accounts, Asking asking) = 0;
    /// Missing secrets are no error. Throws CredentialError if some remain, or if that is unknown because a
    /// store does not answer.
    virtual void remove(const Accounts& accounts) = 0;

    struct Description {
        bool isEncrypted = false;
        bool isLocked = false; ///< there is a store that can't be read until it is unlocked
        std::string where;     ///< for people
    };
    /// Where the next secret would be kept. Does not ask the user anything.
    virtual Description describe() = 0;

    /// The key store of the desktop. Without one, or if a saved secret does not read back, the file: JSON
    /// that only its owner may read, not encrypted. The file is never used while a locked store keeps secrets
    /// of this program: saving fails then.
    static std::shared_ptr<CredentialStore> create(std::string fallbackFile);
};

} // namespace orvane::platform
