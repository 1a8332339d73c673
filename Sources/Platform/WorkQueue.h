#pragma once

#include "Platform/MainThread.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

namespace orvane::platform {

/// Work in the order of posting, and delayed work, run by one thread, one piece at a time. The common part of
/// a run loop and a serial queue. Everything but `serve` from any thread.
class WorkQueue {
  public:
    enum class Stop {
        running,
        now,     ///< after the current piece of work; the rest stays for the next `serve`
        whenDone ///< after everything posted; delayed work then runs at once
    };

    void post(std::function<void()> work);
    std::shared_ptr<Timer> after(std::chrono::nanoseconds delay, std::function<void()> work);
    /// Runs the work after what was posted before and waits for it; its exception passes through. If the
    /// queue's thread has not woken up yet, the caller runs the queued work itself, up to and including its
    /// own.
    void sync(const std::function<void()>& work);
    void stop(Stop how);
    /// Runs work until it is stopped.
    void serve();

  private:
    class Delayed;
    using Moment = std::chrono::steady_clock::time_point;
    using Lock = std::unique_lock<std::mutex>;

    std::function<void()> next(Lock& lock);
    std::function<void()> takeFirst();
    void moveDue(Moment now);

    std::mutex mutex_;
    std::condition_variable changed_;   ///< wakes the thread in `serve`
    std::condition_variable workEnded_; ///< wakes callers of `sync`
    bool isServing_ = false;            ///< `serve` is running a piece of work
    bool isHelped_ = false;             ///< a caller of `sync` is running one
    int waiting_ = 0;                   ///< callers of `sync`
    std::deque<std::function<void()>> ready_;
    /// Sorted by time; equal times in the order of the calls.
    std::multimap<Moment, std::shared_ptr<Delayed>> later_;
    Stop stop_ = Stop::running;
};

} // namespace orvane::platform
