#pragma once

#include <functional>
#include <string>
#include <vector>

namespace orvane::test {

/// From then on a test fails if work on the interface thread waits, touches a file, or uses far more
/// processor time than allowed; the message names the work and the cause. Returns true, so that it can
/// initialise a variable.
bool watchInterfaceThreads();

/// The calls of a piece of work that may block the interface thread, in order; they are not failures.
std::vector<std::string> whatHoldsUp(const std::function<void()>& work);

} // namespace orvane::test
