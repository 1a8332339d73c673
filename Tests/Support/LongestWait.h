#pragma once

#include <chrono>

namespace orvane::test {

/// How long a test waits in real time for what must happen. Only a failing test waits so long; tests under a
/// sanitizer on a loaded machine take up to twenty times as long as alone.
inline constexpr std::chrono::milliseconds longestWait = std::chrono::minutes(2);

} // namespace orvane::test
