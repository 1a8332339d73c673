#pragma once

#include "Platform/Secret.h"

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

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
    virtual ~CredentialStore() = default;

    /// In place of what was kept under that name. Throws CredentialError.
    virtual void save(const std::string& account, const Secret& value) = 0;
    /// Nothing where none is kept, or none can be read.
    virtual std::optional<Secret> read(const std::string& account) = 0;
    /// One that is missing is no error. Throws CredentialError where it is there and stays.
    virtual void remove(const std::string& account) = 0;

    struct Description {
        bool isEncrypted = false;
        std::string where; ///< for people
    };
    /// Where the next secret would be kept.
    virtual Description describe() = 0;

    /// The key store of the desktop, and where there is none, or what was saved does not read back (a locked
    /// one answers with nothing and no error), the file: JSON that its owner alone may read, not encrypted.
    static std::shared_ptr<CredentialStore> create(std::string fallbackFile);
};

} // namespace orvane::platform
