#pragma once

#include "Platform/SHA256.h"

#include <memory>

namespace orvane::platform {

/// By libcrypto.
std::unique_ptr<SHA256::Engine> makeSHA256();

} // namespace orvane::platform
