#pragma once

#include <memory>

namespace orvane::platform {

/// Holds a subscription to notices; no call begins once this is gone.
using Subscription = std::shared_ptr<void>;

} // namespace orvane::platform
