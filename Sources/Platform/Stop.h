#pragma once

#include <cstddef>
#include <stop_token>
#include <utility>

namespace orvane::platform {

/// An operation was asked to stop, and has stopped. Not a std::exception: code that continues after an error
/// in a file must not take a stop for a failure.
class Stopped {
  public:
    /// For people.
    const char* what() const noexcept { return "cancelled"; }
};

// The rule: a function that may run longer than 10 ms takes a std::stop_token as its last parameter and
// checks it once for each block, file, clip or some thousand rows. It throws Stopped, so its result so far is
// discarded as with any exception; the writer of a file removes what it wrote meanwhile. A default token
// never stops.

inline void throwIfStopped(const std::stop_token& stop) {
    if (stop.stop_requested()) throw Stopped();
}

/// For steps that are too short to check each: checks every `interval` steps.
class StopCheck {
  public:
    explicit StopCheck(std::stop_token stop, std::size_t interval = 1024)
        : stop_(std::move(stop)), interval_(interval) {}
    void operator()() {
        if (++steps_ % interval_ == 0) throwIfStopped(stop_);
    }

  private:
    std::stop_token stop_;
    std::size_t interval_;
    std::size_t steps_ = 0;
};

} // namespace orvane::platform
