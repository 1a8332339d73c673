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
class Share : public std::enable_shared_from_this<Share> {
  public:
    Share(std::size_t count, const std::function<void(std::size_t)>& work, std::stop_token stop)
        : count_(count), work_(&work), stop_(std::move(stop)) {}

    void postHelpers(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i)
            Pool::shared().post([self = shared_from_this()] { self->help(); });
    }

    void work() {
        while (takeIndex()) {
        }
    }

    void close() {
        std::unique_lock lock(mutex_);
        closed_ = true;
        changed_.wait(lock, [this] { return helping_ == 0; });
        if (raised_) std::rethrow_exception(raised_);
    }

  private:
    /// Does nothing if the caller has closed the task already.
    void help() {
        {
            const std::lock_guard lock(mutex_);
            if (closed_) return;
            ++helping_;
        }
        do {
            if (leaveForPlayback()) return;
        } while (takeIndex());
        const std::lock_guard lock(mutex_);
        --helping_;
        changed_.notify_one();
    }

    /// Ends the calling helper if something plays and its processor is needed for that.
    bool leaveForPlayback() {
        if (!PlaybackActivity::isUnderWay()) return false;
        const std::size_t most = std::max<std::size_t>(std::thread::hardware_concurrency(), 2) - 1;
        const std::lock_guard lock(mutex_);
        if (helping_ < most) return false; // the caller works too
        --helping_;
        ++away_;
        changed_.notify_one();
        return true;
    }

    /// False if none is left.
    bool takeIndex() {
        const std::size_t i = next_++;
        if (i >= count_) return false;
        try {
            throwIfStopped(stop_);
            if (away_ != 0 && !PlaybackActivity::isUnderWay()) postHelpers(away_.exchange(0));
            (*work_)(i);
        } catch (...) {
            next_ = count_;
            const std::lock_guard lock(mutex_);
            if (!raised_) raised_ = std::current_exception();
        }
        return true;
    }

    const std::size_t count_;
    const std::function<void(std::size_t)>* const work_;
    const std::stop_token stop_;
    std::atomic<std::size_t> next_ = 0;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::size_t helping_ = 0;
    std::atomic<std::size_t> away_ = 0; ///< helpers that left for playback; they return when it has ended
    bool closed_ = false;
    std::exception_ptr raised_;
};

} // namespace

void concurrently(std::size_t count, std::size_t concurrency, const std::function<void(std::size_t)>& work,
                  const std::stop_token& stop) {
    assertMayBlock("waiting for other threads");
    // The caller works too, so that a nested call makes progress even when no thread of the pool is free.
    const auto task = std::make_shared<Share>(count, work, stop);
    const std::size_t threads = std::min({count, concurrency, Pool::shared().limit()});
    if (threads > 1) task->postHelpers(threads - 1);
    task->work();
    task->close();
}

} // namespace orvane::platform
