#pragma once

#include "Platform/InterfaceVersion.h"

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace orvane::platform {

/// What the loadable module of the desktop's key store offers. Calls wait for the store, but at most as long
/// as somebody needs to unlock it; `mayAsk` is whether the desktop may ask for that, once. A store that was
/// started again is found again. None of the calls throws.
struct SecretServiceModule {
    static constexpr const char* entryPoint = "orvaneSecretServiceModule";
    static constexpr const char* fileName = "liborvane_secret_service.so";

    enum class Answer {
        done,
        locked, ///< it is there, and does not show all that it may keep
        absent, ///< the desktop has none, or there is no desktop: nothing can be kept there
        none    ///< it failed, or does not answer
    };
    /// Of all that this program keeps in it.
    struct Found {
        Answer answer = Answer::none;
        std::map<std::string, std::string> values;
        /// Accounts of which there is one that it does not show. A store that was locked since it was started
        /// names none.
        std::set<std::string> locked;
    };

    std::uint64_t version = interfaceVersion;
    /// Whether the store said that it has it; it may not have.
    Answer (*save)(const std::string& account, const std::string& value, bool mayAsk) = nullptr;
    /// Asks for no more than what it finds locked.
    Found (*read)(bool mayAsk) = nullptr;
    /// Removes what is not locked; done when the store answers that nothing of these accounts is left.
    Answer (*remove)(const std::vector<std::string>& accounts) = nullptr;
    /// Asks for the store as a whole.
    Answer (*unlock)() = nullptr;
};

} // namespace orvane::platform
