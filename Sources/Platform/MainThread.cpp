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

/// A piece of work on a thread of its own, for as long as somebody waits for it and beyond.
class StoppablePiece {
  public:
    explicit StoppablePiece(std::function<void()> work) : work_(std::move(work)) {}

    /// Returns when the work has ended, or was stopped and did not notice in time.
    static void run(const std::shared_ptr<StoppablePiece>& piece, const std::string& name,
                    const std::stop_token& stop) {
        try {
            std::thread thread([piece] { piece->work(); });
            nameThread(thread, name);
            thread.detach();
        } catch (const std::system_error&) { // no thread left
            piece->work();
        }
        piece->wait(stop);
    }

  private:
    void work() {
        work_();
        work_ = nullptr;
        const std::lock_guard lock(mutex_);
        isDone_ = true;
        if (isAbandoned_) --abandonedPieces;
        changed_.notify_all();
    }
    void wait(const std::stop_token& stop) {
        std::unique_lock lock(mutex_);
        const auto isDone = [this] { return isDone_; };
        if (changed_.wait(lock, stop, isDone)) return;
        if (changed_.wait_for(lock, SerialQueue::patience, isDone)) return;
        isAbandoned_ = true;
        ++abandonedPieces;
    }

    std::function<void()> work_;
    std::mutex mutex_;
    std::condition_variable_any changed_;
    bool isDone_ = false;
    bool isAbandoned_ = false;
};

class ThreadQueue final : public SerialQueue {
  public:
    explicit ThreadQueue(const char* label) : label_(label), thread_([this] { queue_.serve(); }) {
        nameThread(thread_, label_);
    }
    ~ThreadQueue() override {
        queue_.stop(WorkQueue::Stop::whenDone);
        thread_.join();
    }

    void post(std::function<void()> work, std::stop_token stop) override {
        if (!stop.stop_possible()) return queue_.post(std::move(work));
        auto piece = std::make_shared<StoppablePiece>(std::move(work));
        queue_.post([this, piece = std::move(piece), stop = std::move(stop)] {
            if (!stop.stop_requested()) StoppablePiece::run(piece, label_, stop);
        });
    }
    void after(std::chrono::nanoseconds delay, std::function<void()> work) override {
        queue_.after(delay, std::move(work));
    }
    void sync(const std::function<void()>& work) override { queue_.sync(work); }

  private:
    const std::string label_;
    WorkQueue queue_;
    std::thread thread_; // last: it serves the queue from its first moment
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
