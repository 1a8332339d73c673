#pragma once

#include <cstdint>
#include <string_view>

namespace orvane {

/// A hash, eight bytes a step, for tables and for detecting damage; not safe against forgery. Pure; any
/// thread.
std::uint64_t quickHash(std::string_view bytes);

} // namespace orvane
