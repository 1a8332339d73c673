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

/// Work in the order of posting, and work for later, served by one thread, one piece at a time. What a run
/// loop and a serial queue have in common. Everything but `serve` from any thread.
class WorkQueue {
  public:
    enum class Stop {
        running,
        now,     ///< after the piece of work that runs; the rest stays for the next `serve`
        whenDone ///< after everything posted, and what was to come later, at once
    };

    void post(std::function<void()> work);
    std::shared_ptr<Timer> after(std::chrono::nanoseconds delay, std::function<void()> work);
    /// Runs the work in its turn and waits for it; its exception passes through. While the queue's thread has
    /// not woken up, the caller runs the queued work itself, up to and including its own.
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
    std::condition_variable changed_;   ///< for the server
    std::condition_variable workEnded_; ///< for callers of `sync`
    bool isServing_ = false;            ///< the server runs a piece of work
    bool isHelped_ = false;             ///< a caller of `sync` runs one
    int waiting_ = 0;                   ///< callers of `sync`
    std::deque<std::function<void()>> ready_;
    /// By moment; equal moments in the order in which they were asked for.
    std::multimap<Moment, std::shared_ptr<Delayed>> later_;
    Stop stop_ = Stop::running;
};

} // namespace orvane::platform
