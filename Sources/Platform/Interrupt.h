#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace orvane::platform {

/// Ends the process at once on SIGINT, SIGTERM and SIGHUP, with status 128 plus the signal's number and
/// without a half-written file. Call it once, before any other thread is started. `exitMessage` is printed to
/// standard error, on SIGINT followed by a line that says so. A signal that was ignored when the process
/// started stays ignored. If a disk does not answer, the process still ends and half-written files remain.
void exitOnInterrupt(std::string exitMessage);

/// Sets the callback that saves what is unsaved when the process is asked to end. It is called on a thread of
/// its own at the first SIGTERM or SIGHUP; `end`, which may be called from any thread, then ends the process
/// as the signal would have, and its text is printed to standard error. A second signal, and SIGINT, end it
/// at once. Null removes the callback; a call that has begun continues, so the callback owns what it uses.
using EndProcess = std::function<void(const std::string& exitMessage)>;
/// `timeLimit`: how long writing may make no progress. The process then ends with status 1 and names the
/// file. A slow save that makes progress has no limit.
void beforeTermination(std::function<void(const EndProcess& end)> callback,
                       std::chrono::milliseconds timeLimit = std::chrono::seconds(10));

/// When memory runs out, on any thread, the process ends at that allocation with status 1, a line on standard
/// error and no half-written file.
void endWithoutMemory();

/// From now on, writing to a pipe without a reader, or past the user's limit of a file's size, is an error of
/// the write and does not end the process.
void failRefusedWrites();

/// The status of a process that a write to a pipe without a reader ended, if the descriptor is such a pipe:
/// it is the reader that wanted no more, so nothing failed.
std::optional<int> statusWithoutReader(int descriptor);

} // namespace orvane::platform
