#pragma once

#include <chrono>
#include <functional>

namespace orvane::platform {

// The rule of the interface thread: one piece of work in its loop does not open, read, write or decode a
// file, does not wait for another thread, and uses at most 10 ms of processor time. Functions that open, list
// or replace files or wait call `assertMayBlock`, and tests that watch fail; reads and writes of an open file
// are not checked. A program that calls services outside any loop blocks no interface and may block.

/// Runs a piece of work as one of the interface thread. For run loops; a nested piece counts separately.
void runAsInterfaceWork(const std::function<void()>& work);
/// Names the current piece of work in reports; the text must outlive it. Without a name, its type is
/// reported.
void nameInterfaceWork(const char* name);

/// Called by anything that may wait for a disk or another thread.
void assertMayBlock(const char* what);

inline constexpr std::chrono::milliseconds longestInterfaceWork{10}; ///< of processor time

/// Observes the interface threads of the process, for tests. Called on those threads.
struct InterfaceWatch {
    void (*hasBlocked)(const char* what, const char* work) = nullptr;
    /// Called after each piece, with the processor time that it used.
    void (*hasRun)(const char* work, std::chrono::nanoseconds used) = nullptr;
};
/// Set before the first loop runs.
void watchInterfaceWork(const InterfaceWatch& watch);

} // namespace orvane::platform
