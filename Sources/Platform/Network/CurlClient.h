#pragma once

#include "Platform/HTTPClient.h"

#include <memory>

namespace orvane::platform {

/// HTTPClient over libcurl.
std::shared_ptr<HTTPClient> curlClient();

} // namespace orvane::platform
