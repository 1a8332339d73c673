#pragma once

#include <string_view>

namespace orvane::platform {

/// One line in the system's log, at error level, for failures of background work that nobody waits for. Any
/// thread.
void logError(std::string_view message);

} // namespace orvane::platform
