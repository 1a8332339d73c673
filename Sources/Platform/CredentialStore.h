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

/// A secret could not be kept. The description says where and why, and not what.
class CredentialError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Keeps secrets of this program for the user account, each under the name of an account. Calls may take as
/// long as the system asks the user to unlock something: never on the interface thread. Any other thread.
class CredentialStore {
  public:
    using Accounts = std::vector<std::string>;

    /// What is kept under some accounts.
    struct Found {
        std::map<std::string, Secret, std::less<>> values;
        /// The store is locked, and keeps one more of them, which it does not show until it is unlocked.
        bool isLocked = false;

        /// Nothing where none is kept, or none can be read.
        std::optional<Secret> value(std::string_view account) const;
    };
    /// How often the desktop asks the user to unlock a store that keeps what is looked for.
    enum class Asking {
        once, ///< unless the user has refused it before; until it was unlocked
        again ///< as the user wants something that is of no use without it
    };

    virtual ~CredentialStore() = default;

    /// In place of what was kept under that name. Throws CredentialError.
    virtual void save(const std::string& account, const Secret& value) = 0;
    /// All in one look.
    virtual Found read(const Accounts& accounts, Asking asking) = 0;
    /// Those that are missing are no error. Throws CredentialError where some stay, or where it can't be
    /// known: a store that does not answer may keep them.
    virtual void remove(const Accounts& accounts) = 0;

    struct Description {
        bool isEncrypted = false;
        bool isLocked = false; ///< there is a store that can't be read until it is unlocked
        std::string where;     ///< for people
    };
    /// Where the next secret would be kept. Asks the user nothing.
    virtual Description describe() = 0;

    /// The key store of the desktop, and where there is none, or what was saved does not read back, the file:
    /// JSON that its owner alone may read, not encrypted. Never the file where a locked store keeps secrets
    /// of this program: saving fails then.
    static std::shared_ptr<CredentialStore> create(std::string fallbackFile);
};

} // namespace orvane::platform
