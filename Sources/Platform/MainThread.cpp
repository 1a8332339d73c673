#include "Platform/MainThread.h"
#include "Platform/InterfaceThread.h"
#include "Platform/WorkQueue.h"

#include <pthread.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

namespace orvane::platform {

namespace {

class SteadyClock final : public Clock {
  public:
    std::chrono::nanoseconds now() const override {
        return std::chrono::steady_clock::now().time_since_epoch();
    }
    std::chrono::sys_time<std::chrono::milliseconds> date() const override {
        return std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
    }
};

class PlainRunLoop final : public RunLoop {
  public:
    void post(std::function<void()> work) override { queue_.post(ofInterface(std::move(work))); }
    std::shared_ptr<Timer> after(std::chrono::nanoseconds delay, std::function<void()> work) override {
        return queue_.after(delay, ofInterface(std::move(work)));
    }
    bool isCurrent() const override { return owner_.load() == std::this_thread::get_id(); }
    void run() override {
        owner_ = std::this_thread::get_id();
        queue_.serve();
    }
    void quit() override { queue_.stop(WorkQueue::Stop::now); }

  private:
    static std::function<void()> ofInterface(std::function<void()> work) {
        return [work = std::move(work)] { runAsInterfaceWork(work); };
    }

    std::atomic<std::thread::id> owner_ = std::this_thread::get_id();
    WorkQueue queue_;
};

std::atomic<int> abandonedPieces = 0;

void nameThread(std::thread& thread, const std::string& name) {
    constexpr std::size_t longestName = 15; // what the kernel takes
    ::pthread_setname_np(thread.native_handle(), name.substr(0, longestName).c_str());
}

/// A thread that does work which may be stopped, one piece after the other, for a queue that waits for each.
/// A piece that goes on when it is stopped keeps the thread to its end, and the queue goes on with another.
class StoppableRunner {
  public:
    StoppableRunner() = default;
    StoppableRunner(const StoppableRunner&) = delete;
    StoppableRunner& operator=(const StoppableRunner&) = delete;
    ~StoppableRunner() = default;

    /// Null where there is no thread left.
    static std::shared_ptr<StoppableRunner> start(const std::string& name) {
        auto runner = std::make_shared<StoppableRunner>();
        try {
            runner->thread_ = std::thread([runner] { runner->serve(); });
        } catch (const std::system_error&) {
            return nullptr;
        }
        nameThread(runner->thread_, name);
        return runner;
    }

    /// Returns when the work has ended, or was stopped and did not notice in time: false then, and the runner
    /// takes no more work.
    bool run(std::function<void()> work, const std::stop_token& stop) {
        std::unique_lock lock(mutex_);
        work_ = std::move(work);
        isBusy_ = true;
        changed_.notify_all();
        const auto isDone = [this] { return !isBusy_; };
        if (changed_.wait(lock, stop, isDone)) return true;
        if (changed_.wait_for(lock, SerialQueue::timeToStop, isDone)) return true;
        isAbandoned_ = true;
        ++abandonedPieces;
        thread_.detach();
        return false;
    }
    /// Of a runner that is free.
    void end() {
        {
            const std::lock_guard lock(mutex_);
            isEnding_ = true;
            changed_.notify_all();
        }
        thread_.join();
    }

  private:
    void serve() {
        std::unique_lock lock(mutex_);
        for (;;) {
            changed_.wait(lock, [this] { return isBusy_ || isEnding_; });
            if (!isBusy_) return;
            auto work = std::exchange(work_, nullptr);
            lock.unlock();
            work();
            work = nullptr; // what it holds goes before anybody is told
            lock.lock();
            isBusy_ = false;
            changed_.notify_all();
            if (!isAbandoned_) continue;
            --abandonedPieces;
            return;
        }
    }

    std::mutex mutex_;
    std::condition_variable_any changed_;
    std::function<void()> work_;
    bool isBusy_ = false; ///< from when work is given until it has ended
    bool isAbandoned_ = false;
    bool isEnding_ = false;
    std::thread thread_;
};

class ThreadQueue final : public SerialQueue {
  public:
    explicit ThreadQueue(const char* label) : label_(label), thread_([this] { queue_.serve(); }) {
        nameThread(thread_, label_);
    }
    ~ThreadQueue() override {
        queue_.stop(WorkQueue::Stop::whenDone);
        thread_.join();
        if (runner_) runner_->end();
    }

    void post(std::function<void()> work, std::stop_token stop) override {
        if (!stop.stop_possible()) return queue_.post(std::move(work));
        queue_.post([this, work = std::move(work), stop = std::move(stop)]() mutable {
            if (!stop.stop_requested()) run(std::move(work), stop);
        });
    }
    void after(std::chrono::nanoseconds delay, std::function<void()> work) override {
        queue_.after(delay, std::move(work));
    }
    void sync(const std::function<void()>& work) override { queue_.sync(work); }

  private:
    void run(std::function<void()> work, const std::stop_token& stop) {
        if (!runner_) runner_ = StoppableRunner::start(label_);
        if (!runner_) return work();
        if (!runner_->run(std::move(work), stop)) runner_ = nullptr;
    }

    const std::string label_;
    WorkQueue queue_;
    std::shared_ptr<StoppableRunner> runner_; ///< used by the thread of the queue; null until work needs it
    std::thread thread_;                      // last: it serves the queue from its first moment
};

} // namespace

std::shared_ptr<const Clock> systemClock() {
    static const auto clock = std::make_shared<const SteadyClock>();
    return clock;
}

std::shared_ptr<RunLoop> RunLoop::create() { return std::make_shared<PlainRunLoop>(); }

std::unique_ptr<SerialQueue> SerialQueue::create(const char* label) {
    return std::make_unique<ThreadQueue>(label);
}

bool SerialQueue::hasAbandonedWork() { return abandonedPieces > 0; }

} // namespace orvane::platform
