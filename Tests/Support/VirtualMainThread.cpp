#include "Support/VirtualMainThread.h"

#include "Platform/InterfaceThread.h"
#include "Support/InterfaceWatching.h"

#include <algorithm>
#include <utility>

namespace orvane::test {

namespace {
[[maybe_unused]] const bool isWatched = watchInterfaceThreads();
}

std::chrono::nanoseconds ManualClock::now() const {
    const std::lock_guard lock(mutex_);
    return now_;
}

std::chrono::sys_time<std::chrono::milliseconds> ManualClock::date() const {
    using namespace std::chrono;
    return sys_days{2024y / May / 17} + 10h + floor<milliseconds>(now());
}

void ManualClock::advance(std::chrono::nanoseconds by) {
    const std::lock_guard lock(mutex_);
    now_ += by;
}

void ManualClock::set(std::chrono::nanoseconds moment) {
    const std::lock_guard lock(mutex_);
    now_ = moment;
}

class VirtualMainThread::Pending final : public platform::Timer {
  public:
    explicit Pending(std::function<void()> work) : work_(std::move(work)) {}
    void cancel() override { take(); }
    std::function<void()> take() {
        const std::lock_guard lock(mutex_);
        return std::exchange(work_, nullptr);
    }
    bool waits() const {
        const std::lock_guard lock(mutex_);
        return work_ != nullptr;
    }

  private:
    mutable std::mutex mutex_;
    std::function<void()> work_;
};

VirtualMainThread::VirtualMainThread()
    : owner_(std::this_thread::get_id()), clock_(std::make_shared<ManualClock>()) {}

void VirtualMainThread::post(std::function<void()> work) {
    std::list<std::function<void()>> one; // made before the lock: nothing is allocated under it
    one.push_back(std::move(work));
    const std::lock_guard lock(mutex_);
    if (isClosed_) return;
    ready_.splice(ready_.end(), one);
    posted_.notify_all();
}

std::shared_ptr<platform::Timer> VirtualMainThread::after(std::chrono::nanoseconds delay,
                                                          std::function<void()> work) {
    auto timer = std::make_shared<Pending>(std::move(work));
    const std::lock_guard lock(mutex_);
    timers_.emplace(clock_->now() + delay, timer);
    return timer;
}

void VirtualMainThread::close() {
    std::list<std::function<void()>> dropped;
    const std::lock_guard lock(mutex_);
    isClosed_ = true;
    dropped.swap(ready_);
}

bool VirtualMainThread::isCurrent() const { return std::this_thread::get_id() == owner_; }

std::size_t VirtualMainThread::runPosted() {
    for (std::size_t ran = 0;; ++ran) {
        std::unique_lock lock(mutex_);
        if (ready_.empty()) return ran;
        const auto work = std::move(ready_.front());
        ready_.pop_front();
        lock.unlock();
        platform::runAsInterfaceWork(work);
    }
}

void VirtualMainThread::advance(std::chrono::nanoseconds by) {
    const auto end = clock_->now() + by;
    runPosted();
    for (;;) {
        std::shared_ptr<Pending> timer;
        {
            const std::lock_guard lock(mutex_);
            if (timers_.empty() || timers_.begin()->first > end) break;
            clock_->set(std::max(clock_->now(), timers_.begin()->first));
            timer = std::move(timers_.begin()->second);
            timers_.erase(timers_.begin());
        }
        if (const auto work = timer->take()) platform::runAsInterfaceWork(work);
        runPosted();
    }
    clock_->set(end);
}

bool VirtualMainThread::waitUntil(const std::function<bool()>& condition,
                                  std::chrono::milliseconds realTime) {
    const auto deadline = std::chrono::steady_clock::now() + realTime;
    for (;;) {
        runPosted();
        if (condition()) return true;
        std::unique_lock lock(mutex_);
        if (std::chrono::steady_clock::now() >= deadline) return false;
        // Also wakes every few milliseconds: a condition may become true without a post.
        posted_.wait_for(lock, std::chrono::milliseconds(5), [this] { return !ready_.empty(); });
    }
}

std::size_t VirtualMainThread::pendingTimers() const {
    const std::lock_guard lock(mutex_);
    return static_cast<std::size_t>(
        std::ranges::count_if(timers_, [](const auto& timer) { return timer.second->waits(); }));
}

} // namespace orvane::test
