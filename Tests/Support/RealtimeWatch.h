#pragma once

#include <string>

namespace orvane::test {

/// Reports calls that code under `platform::RealtimeScope` must not make. In a test program that uses it, the
/// allocator, locks and waits are replaced by functions that report the call and then do the work. With
/// sanitizers, which need them for themselves, locks and waits are not replaced.
struct RealtimeWatch {
    /// Whether locks and waits are watched as well.
    static bool seesLocks();
    /// The name of the first forbidden call since the last `reset`; empty when there was none. Any thread.
    static std::string firstViolation();
    static void reset();
};

} // namespace orvane::test
