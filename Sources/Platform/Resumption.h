#pragma once

#include "Platform/InterfaceThread.h"
#include "Platform/MainThread.h"

#include <coroutine>
#include <memory>
#include <mutex>
#include <utility>

namespace orvane::platform {

/// A waiting coroutine that is queued to be resumed. If the queue is destroyed before it resumes the
/// coroutine, the coroutine ends.
class Resumption {
  public:
    explicit Resumption(std::coroutine_handle<> waiting) : waiting_(waiting) {}
    ~Resumption() {
        if (waiting_) waiting_.destroy();
    }
    Resumption(const Resumption&) = delete;
    Resumption& operator=(const Resumption&) = delete;
    void resume() { std::exchange(waiting_, nullptr).resume(); }

  private:
    std::coroutine_handle<> waiting_;
};

/// Resumes a suspended operation on the interface thread, once: after the work that it waits for, or after a
/// stop, whichever comes first.
class ReturnWay {
  public:
    explicit ReturnWay(std::coroutine_handle<> waiting) : waiting_(std::make_shared<Resumption>(waiting)) {}
    std::shared_ptr<Resumption> take() {
        const std::lock_guard lock(mutex_);
        return std::exchange(waiting_, nullptr);
    }
    /// `operation` names the resumed work in reports.
    static void post(MainThread& mainThread, std::shared_ptr<Resumption> waiting, const char* operation) {
        mainThread.post([waiting = std::move(waiting), operation] {
            nameInterfaceWork(operation);
            waiting->resume();
        });
    }

  private:
    std::mutex mutex_;
    std::shared_ptr<Resumption> waiting_;
};

} // namespace orvane::platform
