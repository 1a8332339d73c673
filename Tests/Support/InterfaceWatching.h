#pragma once

namespace orvane::test {

/// From now on a test fails in which a piece of work of the interface thread waits, touches a file, or uses
/// far more processor time than it may; the message names both. True, so that it can begin with the program.
bool watchInterfaceThreads();

} // namespace orvane::test
