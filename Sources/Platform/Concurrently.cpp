#include "Platform/InterfaceThread.h"
#include "Platform/MainThread.h"
#include "Platform/Realtime/Threads.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

namespace orvane::platform {

namespace {

/// Threads that live as long as the process; one is made when work finds none idle.
class Pool {
  public:
    static Pool& shared() {
        // Never destroyed: its threads may outlive every static object.
        static Pool* const pool = new Pool;
        return *pool;
    }

    std::size_t limit() const { return limit_; }

    void post(std::function<void()> work) {
        const std::lock_guard lock(mutex_);
        waiting_.push_back(std::move(work));
        if (waiting_.size() > idle_ && threads_ < limit_) startThread();
        changed_.notify_one();
    }

  private:
    /// If no thread can be started, the work waits for the existing ones; if there are none, the caller of
    /// `concurrently` does everything.
    void startThread() {
        try {
            std::thread([this] { serve(); }).detach();
            ++threads_;
        } catch (const std::system_error&) {
            return;
        }
    }

    [[noreturn]] void serve() {
        nameThisThread("concurrently");
        for (;;) {
            std::unique_lock lock(mutex_);
            ++idle_;
            changed_.wait(lock, [this] { return !waiting_.empty(); });
            --idle_;
            const auto work = std::move(waiting_.front());
            waiting_.pop_front();
            lock.unlock();
            work();
        }
    }

    const std::size_t limit_ = 4 * std::max<std::size_t>(std::thread::hardware_concurrency(), 1);
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> waiting_;
    std::size_t idle_ = 0;
    std::size_t threads_ = 0;
};

/// One call of `concurrently`: the caller and its helpers take indices from it until none is left.
class Share {
  public:
    Share(std::size_t count, const std::function<void(std::size_t)>& work, std::stop_token stop)
        : count_(count), work_(&work), stop_(std::move(stop)) {}

    /// Does nothing if the caller has closed the task already.
    void help() {
        {
            const std::lock_guard lock(mutex_);
            if (closed_) return;
            ++helping_;
        }
        takeIndices();
        const std::lock_guard lock(mutex_);
        --helping_;
        changed_.notify_one();
    }

    void takeIndices() {
        for (std::size_t i = next_++; i < count_; i = next_++) {
            try {
                throwIfStopped(stop_);
                (*work_)(i);
            } catch (...) {
                next_ = count_;
                const std::lock_guard lock(mutex_);
                if (!raised_) raised_ = std::current_exception();
            }
        }
    }

    void close() {
        std::unique_lock lock(mutex_);
        closed_ = true;
        changed_.wait(lock, [this] { return helping_ == 0; });
        if (raised_) std::rethrow_exception(raised_);
    }

  private:
    const std::size_t count_;
    const std::function<void(std::size_t)>* const work_;
    const std::stop_token stop_;
    std::atomic<std::size_t> next_ = 0;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::size_t helping_ = 0;
    bool closed_ = false;
    std::exception_ptr raised_;
};

} // namespace

void concurrently(std::size_t count, std::size_t concurrency, const std::function<void(std::size_t)>& work,
                  const std::stop_token& stop) {
    assertMayBlock("waiting for other threads");
    // The caller works too, so that a nested call makes progress even when no thread of the pool is free.
    const auto task = std::make_shared<Share>(count, work, stop);
    std::size_t threads = std::min({count, concurrency, Pool::shared().limit()});
    if (PlaybackActivity::isUnderWay())
        threads = std::min(threads, std::max<std::size_t>(std::thread::hardware_concurrency(), 2) - 1);
    for (std::size_t i = 1; i < threads; ++i) Pool::shared().post([task] { task->help(); });
    task->takeIndices();
    task->close();
}

} // namespace orvane::platform
