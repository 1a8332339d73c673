#pragma once

#include "Platform/HTTPClient.h"

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace orvane::platform {

/// What the loadable module of network libraries offers.
struct NetworkModule {
    static constexpr unsigned currentVersion = 2;
    static constexpr const char* entryPoint = "orvaneNetworkModule";
    static constexpr const char* fileName = "liborvane_network.so";

    unsigned version = currentVersion;
    std::shared_ptr<HTTPClient> (*httpClient)() = nullptr;
    /// For people, such as "libcurl 7.88.1".
    std::string (*versions)() = nullptr;
    /// SHA-256.
    std::array<std::byte, 32> (*sha256)(std::string_view bytes) = nullptr;
};

} // namespace orvane::platform
