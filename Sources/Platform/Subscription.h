#pragma once

#include <memory>

namespace orvane::platform {

/// Holds a subscription to notices; no call begins after this is destroyed.
using Subscription = std::shared_ptr<void>;

} // namespace orvane::platform
