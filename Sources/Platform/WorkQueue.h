#pragma once

#include "Platform/MainThread.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

namespace orvane::platform {

/// Work in the order of posting, and work for later, served by one thread. What a run loop and a serial queue
/// have in common. Everything but `serve` from any thread.
class WorkQueue {
  public:
    enum class Stop {
        running,
        now,     ///< after the piece of work that runs; the rest stays for the next `serve`
        whenDone ///< after everything posted, and what was to come later, at once
    };

    void post(std::function<void()> work);
    std::shared_ptr<Timer> after(std::chrono::nanoseconds delay, std::function<void()> work);
    void stop(Stop how);
    /// Runs work until it is stopped.
    void serve();

  private:
    class Delayed;
    using Moment = std::chrono::steady_clock::time_point;

    std::function<void()> next();
    void moveDue(Moment now);

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> ready_;
    /// By moment; equal moments in the order in which they were asked for.
    std::multimap<Moment, std::shared_ptr<Delayed>> later_;
    Stop stop_ = Stop::running;
};

} // namespace orvane::platform
