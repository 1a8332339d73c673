#pragma once

#include <cstddef>
#include <span>

namespace orvane::platform {

/// Fills with bytes fit for identifiers and secrets. Any thread; never fails short of a broken system, which
/// aborts.
void secureRandom(std::span<std::byte> bytes);

} // namespace orvane::platform
