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
    constexpr std::size_t longestName = 15; // the kernel's limit
    ::pthread_setname_np(thread.native_handle(), name.substr(0, longestName).c_str());
}

/// A thread for work that may be stopped, one piece after another, for a queue that waits for each. A piece
/// that does not end when it is stopped keeps its thread, and the queue continues on another one.
class StoppableRunner {
  public:
    StoppableRunner() = default;
    StoppableRunner(const StoppableRunner&) = delete;
    StoppableRunner& operator=(const StoppableRunner&) = delete;
    ~StoppableRunner() = default;

    /// Null if no thread can be started.
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

    /// Returns true when the work has ended; false when it was stopped and did not end in time. The runner
    /// then takes no more work.
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
    /// For an idle runner.
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
            work = nullptr; // what it holds is destroyed before the waiting thread is notified
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
    bool isBusy_ = false; ///< from the assignment of work until its end
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
    std::shared_ptr<StoppableRunner> runner_; ///< used by the queue's thread; null until work needs it
    std::thread thread_;                      // last: it uses the queue from its start
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
