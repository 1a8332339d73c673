#pragma once

#include <cstddef>
#include <span>

namespace orvane::platform {

/// Fills with random bytes for identifiers and secrets. Any thread. Never fails: where the system gives no
/// random bytes, the process aborts.
void secureRandom(std::span<std::byte> bytes);

} // namespace orvane::platform
