#pragma once

#include <cstdint>
#include <string_view>

namespace orvane {

/// Of eight bytes a step, for finding and for seeing damage; no defence against forgery. Pure; any thread.
std::uint64_t quickHash(std::string_view bytes);

} // namespace orvane
