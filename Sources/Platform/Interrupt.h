#pragma once

#include <string>

namespace orvane::platform {

/// Ends the process at once on SIGINT, SIGTERM and SIGHUP, with status 128 plus the signal's number and
/// without a half-written file. To be called once, before any other thread is started. `lastWords` goes to
/// standard error. A signal that the process was started to ignore stays ignored.
void exitOnInterrupt(std::string lastWords);

} // namespace orvane::platform
