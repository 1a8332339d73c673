#pragma once

#include "Platform/InterfaceVersion.h"

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace orvane::platform {

/// The functions of the loadable module of the desktop's key store. Calls wait for the store, at most as long
/// as a person needs to unlock it; `mayAsk`: whether the desktop may ask for that, once. A store that was
/// restarted is found again. None of the calls throws.
struct SecretServiceModule {
    static constexpr const char* fileName = "liborvane_secret_service.so";

    enum class Answer {
        done,
        locked, ///< it exists, but does not show all that it may keep
        absent, ///< the desktop has none, or there is no desktop: nothing can be kept there
        none    ///< it failed, or does not answer
    };
    /// Everything that this program keeps in it.
    struct Found {
        Answer answer = Answer::none;
        std::map<std::string, std::string> values;
        /// Accounts with a secret that it does not show. A store that has been locked since it was started
        /// names none.
        std::set<std::string> locked;
    };

    std::uint64_t version = interfaceVersion;
    /// Whether the store reported that it has the value; it may still not have it.
    Answer (*save)(const std::string& account, const std::string& value, bool mayAsk) = nullptr;
    /// Asks to unlock only what is locked.
    Found (*read)(bool mayAsk) = nullptr;
    /// Removes what is not locked; done when the store reports that nothing of these accounts is left.
    Answer (*remove)(const std::vector<std::string>& accounts) = nullptr;
    /// Asks to unlock the whole store.
    Answer (*unlock)() = nullptr;
};

} // namespace orvane::platform
