#pragma once

#include <cstddef>
#include <stop_token>
#include <utility>

namespace orvane::platform {

/// An operation was asked to stop, and has stopped. No std::exception: code that goes on after an error in a
/// file must not take a stop for a failure.
class Stopped {
  public:
    /// For people.
    const char* what() const noexcept { return "cancelled"; }
};

// The rule: a function that may run longer than 10 ms takes a std::stop_token as its last parameter and asks
// it once per block, file, clip or some thousand rows. It throws Stopped, so what it made so far is discarded
// as with any exception; what it wrote meanwhile is removed by whoever writes. A default token never stops.

inline void throwIfStopped(const std::stop_token& stop) {
    if (stop.stop_requested()) throw Stopped();
}

/// For steps too small to ask at each of them: asks at one in `interval`.
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
