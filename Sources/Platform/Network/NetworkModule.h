#pragma once

#include "Platform/HTTPClient.h"
#include "Platform/InterfaceVersion.h"
#include "Platform/SHA256.h"

#include <cstdint>
#include <memory>
#include <string>

namespace orvane::platform {

/// The functions of the loadable module of network libraries.
struct NetworkModule {
    static constexpr const char* fileName = "liborvane_network.so";

    std::uint64_t version = interfaceVersion;
    std::shared_ptr<HTTPClient> (*httpClient)() = nullptr;
    /// For people, such as "libcurl 7.88.1".
    std::string (*versions)() = nullptr;
    std::unique_ptr<SHA256::Engine> (*sha256)() = nullptr;
};

} // namespace orvane::platform
