#pragma once

#include <string_view>

namespace orvane::platform {

/// Writes one line to the system's log, at error level, for failures of background work whose result no
/// caller waits for. Any thread.
void logError(std::string_view message);

} // namespace orvane::platform
