#pragma once

#include <functional>
#include <string>
#include <vector>

namespace orvane::test {

/// From now on a test fails in which a piece of work of the interface thread waits, touches a file, or uses
/// far more processor time than it may; the message names both. True, so that it can begin with the program.
bool watchInterfaceThreads();

/// What of a piece of work may hold up the interface thread, in its order; none of it is a failure.
std::vector<std::string> whatHoldsUp(const std::function<void()>& work);

} // namespace orvane::test
