#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace orvane::platform {

/// SHA-256 of the bytes (FIPS 180-4); nothing where this installation lacks the network module, whose library
/// computes it. Any thread.
std::optional<std::array<std::byte, 32>> sha256(std::string_view bytes);

} // namespace orvane::platform
