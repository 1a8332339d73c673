#pragma once

#include <chrono>
#include <functional>

namespace orvane::platform {

// The rule of the interface thread: a piece of work that runs in its loop neither opens, reads or writes a
// file, nor decodes, nor waits for another thread, and uses at most 10 ms of processor time. Whatever does
// one of these says so by `assertMayBlock`, and tests that watch fail. A program that calls services by
// itself, outside any loop, keeps no interface waiting and may block.

/// Runs a piece of work as one of the interface thread. For loops; one within another counts by itself.
void runAsInterfaceWork(const std::function<void()>& work);
/// What the piece under way is called in reports; a text that stays. Without one it is known by its type.
void nameInterfaceWork(const char* name);

/// Said by whatever may take as long as a disk or another thread wants.
void assertMayBlock(const char* what);

inline constexpr std::chrono::milliseconds longestInterfaceWork{10}; ///< of processor time

/// What watches the interface threads of the process, for tests. Called on those threads.
struct InterfaceWatch {
    void (*hasBlocked)(const char* what, const char* work) = nullptr;
    /// Each piece, with the processor time that it used.
    void (*hasRun)(const char* work, std::chrono::nanoseconds used) = nullptr;
};
/// Set before the first loop runs.
void watchInterfaceWork(const InterfaceWatch& watch);

} // namespace orvane::platform
