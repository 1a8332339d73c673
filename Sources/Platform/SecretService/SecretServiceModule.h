#pragma once

#include <optional>
#include <string>

namespace orvane::platform {

/// What the loadable module of the desktop's key store offers. Calls wait for the store, but at most as long
/// as somebody needs to unlock it. None of them throws.
struct SecretServiceModule {
    static constexpr unsigned currentVersion = 1;
    static constexpr const char* entryPoint = "orvaneSecretServiceModule";
    static constexpr const char* fileName = "liborvane_secret_service.so";

    unsigned version = currentVersion;
    /// Whether the store said that it has it; it may not have.
    bool (*save)(const std::string& account, const std::string& value) = nullptr;
    std::optional<std::string> (*read)(const std::string& account) = nullptr;
    /// Whether nothing of it is left, as far as the store answers. A locked one keeps what it has.
    bool (*remove)(const std::string& account) = nullptr;
};

} // namespace orvane::platform
