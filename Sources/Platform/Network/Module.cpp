#include "Platform/Network/CurlClient.h"
#include "Platform/Network/NetworkModule.h"

#include <curl/curl.h>
#include <openssl/sha.h>

extern "C" __attribute__((visibility("default"))) const orvane::platform::NetworkModule*
orvaneNetworkModule() {
    using orvane::platform::NetworkModule;
    static const NetworkModule module{
        NetworkModule::currentVersion, orvane::platform::curlClient,
        [] { return std::string("libcurl ") + curl_version_info(CURLVERSION_NOW)->version; },
        [](std::string_view bytes) {
            std::array<std::byte, SHA256_DIGEST_LENGTH> hash{};
            SHA256(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(),
                   reinterpret_cast<unsigned char*>(hash.data()));
            return hash;
        }};
    return &module;
}
