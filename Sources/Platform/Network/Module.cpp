#include "Platform/Modules.h"
#include "Platform/Network/CurlClient.h"
#include "Platform/Network/Hashing.h"
#include "Platform/Network/NetworkModule.h"

#include <curl/curl.h>

const void* orvaneModule() {
    using orvane::platform::NetworkModule;
    static const NetworkModule module{
        orvane::platform::interfaceVersion, orvane::platform::curlClient,
        [] { return std::string("libcurl ") + curl_version_info(CURLVERSION_NOW)->version; },
        orvane::platform::makeSHA256};
    return &module;
}
