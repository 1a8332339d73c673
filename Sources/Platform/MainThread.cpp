#include "Platform/MainThread.h"
#include "Platform/WorkQueue.h"

#include <pthread.h>

#include <atomic>
#include <string>
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
    void post(std::function<void()> work) override { queue_.post(std::move(work)); }
    std::shared_ptr<Timer> after(std::chrono::nanoseconds delay, std::function<void()> work) override {
        return queue_.after(delay, std::move(work));
    }
    bool isCurrent() const override { return owner_.load() == std::this_thread::get_id(); }
    void run() override {
        owner_ = std::this_thread::get_id();
        queue_.serve();
    }
    void quit() override { queue_.stop(WorkQueue::Stop::now); }

  private:
    std::atomic<std::thread::id> owner_ = std::this_thread::get_id();
    WorkQueue queue_;
};

class ThreadQueue final : public SerialQueue {
  public:
    explicit ThreadQueue(const char* label) : thread_([this] { queue_.serve(); }) {
        constexpr std::size_t longestName = 15; // what the kernel takes
        ::pthread_setname_np(thread_.native_handle(), std::string(label).substr(0, longestName).c_str());
    }
    ~ThreadQueue() override {
        queue_.stop(WorkQueue::Stop::whenDone);
        thread_.join();
    }

    void post(std::function<void()> work) override { queue_.post(std::move(work)); }
    void after(std::chrono::nanoseconds delay, std::function<void()> work) override {
        queue_.after(delay, std::move(work));
    }
    void sync(const std::function<void()>& work) override { queue_.sync(work); }

  private:
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

} // namespace orvane::platform
