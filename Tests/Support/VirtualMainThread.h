#pragma once

#include "Platform/MainThread.h"
#include "Support/LongestWait.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

namespace orvane::test {

/// A clock that only the test moves. Any thread.
class ManualClock final : public platform::Clock {
  public:
    std::chrono::nanoseconds now() const override;
    /// 17 May 2024 10:00 UTC plus the time that has passed.
    std::chrono::sys_time<std::chrono::milliseconds> date() const override;
    void advance(std::chrono::nanoseconds by);
    void set(std::chrono::nanoseconds moment);

  private:
    mutable std::mutex mutex_;
    std::chrono::nanoseconds now_{0};
};

/// A main thread whose time the test moves. The thread that makes it is the main thread; work runs only
/// inside `runPosted`, `advance` and `waitUntil`. Posting and timers from any thread.
class VirtualMainThread final : public platform::MainThread {
  public:
    VirtualMainThread();

    void post(std::function<void()> work) override;
    std::shared_ptr<platform::Timer> after(std::chrono::nanoseconds delay,
                                           std::function<void()> work) override;
    bool isCurrent() const override;

    /// Runs the posted work and the work that it posts, and returns how many pieces of work ran.
    std::size_t runPosted();
    /// Moves time forward: each timer runs at its time, and the work that it posts runs before the next
    /// timer.
    void advance(std::chrono::nanoseconds by);
    /// Runs work from real background threads until the condition holds; false after `realTime`.
    bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds realTime = longestWait);
    /// Drops waiting work and all later work: operations that still run when a test ends own this thread, and
    /// their posted work would be owned by it.
    void close();
    /// Timers that have neither run nor been cancelled.
    std::size_t pendingTimers() const;

    /// Moves with `advance`.
    std::shared_ptr<const platform::Clock> clock() const { return clock_; }

  private:
    class Pending;

    const std::thread::id owner_;
    const std::shared_ptr<ManualClock> clock_;
    mutable std::mutex mutex_;
    std::condition_variable posted_;
    std::list<std::function<void()>> ready_;
    bool isClosed_ = false;
    std::multimap<std::chrono::nanoseconds, std::shared_ptr<Pending>> timers_;
};

} // namespace orvane::test
