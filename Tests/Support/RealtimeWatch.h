#pragma once

#include <string>

namespace orvane::test {

/// What code under `platform::RealtimeScope` must not call. A test program that uses it has its allocator
/// and, without sanitizers (which need them for themselves), its locks and waits replaced by ones that report
/// such calls and then do their work.
struct RealtimeWatch {
    /// Whether locks and waits are watched as well.
    static bool seesLocks();
    /// The name of the first forbidden call since the last `reset`; empty when there was none. Any thread.
    static std::string firstViolation();
    static void reset();
};

} // namespace orvane::test
