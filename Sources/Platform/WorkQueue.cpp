#include "Platform/WorkQueue.h"

#include "Platform/InterfaceThread.h"

namespace orvane::platform {

/// Holds the work until it is run or cancelled, whichever comes first.
class WorkQueue::Delayed final : public Timer {
  public:
    explicit Delayed(std::function<void()> work) : work_(std::move(work)) {}
    void cancel() override { take(); }
    std::function<void()> take() {
        const std::lock_guard lock(mutex_);
        return std::exchange(work_, nullptr);
    }

  private:
    std::mutex mutex_;
    std::function<void()> work_;
};

void WorkQueue::post(std::function<void()> work) {
    const std::lock_guard lock(mutex_);
    ready_.push_back(std::move(work));
    changed_.notify_one();
}

std::shared_ptr<Timer> WorkQueue::after(std::chrono::nanoseconds delay, std::function<void()> work) {
    auto timer = std::make_shared<Delayed>(std::move(work));
    const std::lock_guard lock(mutex_);
    later_.emplace(std::chrono::steady_clock::now() + delay, timer);
    changed_.notify_one();
    return timer;
}

void WorkQueue::sync(const std::function<void()>& work) {
    assertMayBlock("waiting for a queue");
    bool isDone = false;
    std::exception_ptr raised;
    Lock lock(mutex_);
    ready_.push_back([&] {
        std::exception_ptr caught;
        try {
            work();
        } catch (...) {
            caught = std::current_exception();
        }
        const std::lock_guard done(mutex_);
        raised = caught;
        isDone = true;
    });
    ++waiting_;
    while (!isDone) {
        if (isServing_ || isHelped_) {
            workEnded_.wait(lock);
            continue;
        }
        isHelped_ = true;
        auto first = takeFirst();
        lock.unlock();
        first();
        first = nullptr; // its captures may use the queue when they are destroyed
        lock.lock();
        isHelped_ = false;
        workEnded_.notify_all();
        changed_.notify_one();
    }
    --waiting_;
    if (raised) std::rethrow_exception(raised);
}

void WorkQueue::stop(Stop how) {
    const std::lock_guard lock(mutex_);
    stop_ = how;
    changed_.notify_one();
}

void WorkQueue::serve() {
    Lock lock(mutex_);
    while (std::function<void()> work = next(lock)) {
        isServing_ = true;
        lock.unlock();
        work();
        work = nullptr;
        lock.lock();
        isServing_ = false;
        if (waiting_ > 0) workEnded_.notify_all();
    }
}

void WorkQueue::moveDue(Moment now) {
    while (!later_.empty() && later_.begin()->first <= now) {
        // Taken when its turn comes, so that it can be cancelled until then.
        ready_.push_back([timer = std::move(later_.begin()->second)] {
            if (const auto work = timer->take()) work();
        });
        later_.erase(later_.begin());
    }
}

std::function<void()> WorkQueue::takeFirst() {
    auto work = std::move(ready_.front());
    ready_.pop_front();
    return work;
}

/// Waits for the next piece of work; nothing when the queue is stopped.
std::function<void()> WorkQueue::next(Lock& lock) {
    for (;;) {
        if (stop_ == Stop::now) {
            stop_ = Stop::running;
            return nullptr;
        }
        moveDue(stop_ == Stop::whenDone && ready_.empty() ? Moment::max() : std::chrono::steady_clock::now());
        if (!isHelped_ && !ready_.empty()) return takeFirst();
        if (!isHelped_ && stop_ == Stop::whenDone) return nullptr;
        if (isHelped_ || later_.empty()) {
            changed_.wait(lock);
        } else {
            const Moment moment = later_.begin()->first;
            changed_.wait_until(lock, moment);
        }
    }
}

} // namespace orvane::platform
