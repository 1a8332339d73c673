#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace orvane::platform {

/// Ends the process at once on SIGINT, SIGTERM and SIGHUP, with status 128 plus the signal's number and
/// without a half-written file. To be called once, before any other thread is started. `exitMessage` goes to
/// standard error. A signal that the process was started to ignore stays ignored. A disk that does not answer
/// keeps what is half-written, and not the process.
void exitOnInterrupt(std::string exitMessage);

/// What must still be kept when the process is asked to end: called on a thread of its own at the first
/// SIGTERM or SIGHUP; `end`, which may be called from any thread, then ends the process as the signal would
/// have, and its text goes to standard error. A second signal, and SIGINT, end it at once. Null: nothing; a
/// call that has begun goes on, so the callback owns what it uses.
using EndProcess = std::function<void(const std::string& exitMessage)>;
/// `timeLimit`: for how long nothing that is written may get any further. The process then ends with status 1
/// and names the file. A save that is slow and gets on takes as long as it takes.
void beforeTermination(std::function<void(const EndProcess& end)> callback,
                       std::chrono::milliseconds timeLimit = std::chrono::seconds(10));

/// Where no memory is left, on whatever thread, the process ends at that allocation with status 1, a line on
/// standard error and no half-written file.
void endWithoutMemory();

/// Writing to a pipe that nobody reads, and past the largest file that the user may write, is an error of the
/// write from now on, not the end of the process.
void failRefusedWrites();

} // namespace orvane::platform
