#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <stop_token>

namespace orvane::platform {

/// Tells the time. Injected wherever a moment decides something, so that a test can move it.
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

/// A pending call that can be called off. Destroying it does not call it off.
class Timer {
  public:
    virtual ~Timer() = default;
    virtual void cancel() = 0;
};

/// The one thread that owns controllers, observable state and timers. Under the command line it is a plain
/// run loop, under a desktop shell the shell's own.
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
    /// Serves posted work until `quit`; an exception of the work passes through, and the rest waits for the
    /// next run.
    virtual void run() = 0;
    /// Ends the run after the piece of work that runs now; the next one, when none runs. From any thread.
    virtual void quit() = 0;
    /// Belongs to the thread that makes it until another calls `run`.
    static std::shared_ptr<RunLoop> create();
};

/// Runs one operation at a time, in order, on a thread of its own or of one that waits in `sync`. Destroying
/// it waits for what was posted.
///
/// Work that was posted with a stop token gets a thread of its own while the queue waits for it, and owns
/// what it uses. It is not begun once its token is stopped. Work that was stopped has `timeToStop` to notice;
/// after that nobody waits for it, neither the queue, which goes on to the next piece, nor its destruction,
/// nor the end of the process: a call to the system may hang for as long as a network share is away.
class SerialQueue {
  public:
    static constexpr std::chrono::milliseconds timeToStop{50};

    virtual ~SerialQueue() = default;
    /// The work must not throw.
    virtual void post(std::function<void()> work, std::stop_token stop = {}) = 0;
    /// Runs the work after what was posted before, and waits for it; its exception passes through. Never from
    /// the queue itself.
    virtual void sync(const std::function<void()>& work) = 0;
    /// Runs the work on the queue once the delay has passed; at destruction it runs at once instead, so that
    /// nothing that was promised is lost. Work that always asks for more would never let the queue end.
    virtual void after(std::chrono::nanoseconds delay, std::function<void()> work) = 0;
    static std::unique_ptr<SerialQueue> create(const char* label);

    /// Whether stopped work that nobody waits for still runs, in any queue. The process then ends without
    /// destroying static objects.
    static bool hasAbandonedWork();
};

/// Runs `work(i)` for every i below `count` on up to `concurrency` threads, the caller's and those of a
/// shared pool (four for each processor), and returns when all have ended. Indices are started in ascending
/// order. After an exception no further index is started, and the first exception passes through; once
/// `stop` is requested that is Stopped. May be called from within its own work. While something plays, one
/// processor is left to it.
void concurrently(std::size_t count, std::size_t concurrency, const std::function<void(std::size_t)>& work,
                  const std::stop_token& stop = {});

} // namespace orvane::platform
