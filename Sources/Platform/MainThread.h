#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <stop_token>

namespace orvane::platform {

/// Gives the time. Injected wherever a time decides something, so that a test can set it.
class Clock {
  public:
    virtual ~Clock() = default;
    /// Monotonic; for intervals.
    virtual std::chrono::nanoseconds now() const = 0;
    /// The date and time of day, which the user may set; for what is stored and shown.
    virtual std::chrono::sys_time<std::chrono::milliseconds> date() const = 0;
};

/// The machine's own monotonic clock.
std::shared_ptr<const Clock> systemClock();

/// A pending call that can be cancelled. Destroying it does not cancel the call.
class Timer {
  public:
    virtual ~Timer() = default;
    virtual void cancel() = 0;
};

/// The one thread that owns controllers, observable state and timers. In the command line program it runs a
/// plain run loop, in the desktop app the app's own loop.
class MainThread {
  public:
    virtual ~MainThread() = default;
    /// Runs the work later on this thread, in the order of posting. From any thread.
    virtual void post(std::function<void()> work) = 0;
    /// Runs the work on this thread once the delay has passed. From any thread.
    virtual std::shared_ptr<Timer> after(std::chrono::nanoseconds delay, std::function<void()> work) = 0;
    virtual bool isCurrent() const = 0;
};

/// A plain run loop on the thread that calls `run`.
class RunLoop : public MainThread {
  public:
    /// Runs posted work until `quit`. An exception of the work passes through, and the rest waits for the
    /// next run.
    virtual void run() = 0;
    /// Ends the run after the current piece of work, or the next run if none is running. From any thread.
    virtual void quit() = 0;
    /// Belongs to the thread that makes it until another thread calls `run`.
    static std::shared_ptr<RunLoop> create();
};

/// Runs one operation at a time, in order, on its own thread or on one that waits in `sync`. Its destruction
/// waits for the posted work.
///
/// Work that was posted with a stop token gets a thread of its own while the queue waits for it, and must own
/// what it uses. It is not begun once its token is stopped. Stopped work has `timeToStop` to end. After that
/// the queue continues with the next piece, and neither its destruction nor the end of the process waits for
/// the stopped work: a system call may block for as long as a network share is unreachable.
class SerialQueue {
  public:
    static constexpr std::chrono::milliseconds timeToStop{50};

    virtual ~SerialQueue() = default;
    /// The work must not throw.
    virtual void post(std::function<void()> work, std::stop_token stop = {}) = 0;
    /// Runs the work after what was posted before, and waits for it; its exception passes through. Never from
    /// the queue itself.
    virtual void sync(const std::function<void()>& work) = 0;
    /// Runs the work on the queue once the delay has passed. At destruction it runs at once instead, so that
    /// no work is lost. Work that always posts more work would keep the queue from ending.
    virtual void after(std::chrono::nanoseconds delay, std::function<void()> work) = 0;
    static std::unique_ptr<SerialQueue> create(const char* label);

    /// Whether stopped work that is not waited for is still running, in any queue. The process then ends
    /// without destroying static objects.
    static bool hasAbandonedWork();
};

/// Runs `work(i)` for every i below `count` on up to `concurrency` threads: the caller's and those of a
/// shared pool (four for each processor). Returns when all have ended. Indices are started in ascending
/// order. After an exception no further index is started, and the first exception passes through; after a
/// request of `stop` that is Stopped. May be called from within its own work. During playback one processor
/// is left free for it.
void concurrently(std::size_t count, std::size_t concurrency, const std::function<void(std::size_t)>& work,
                  const std::stop_token& stop = {});

} // namespace orvane::platform
