#pragma once

#include "Platform/MainThread.h"

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

namespace orvane {

/// Calls back repeatedly; each call comes one interval after the previous one has returned. Interface thread.
class Repeating {
  public:
    /// `call` may destroy this object.
    Repeating(std::shared_ptr<platform::MainThread> mainThread, std::chrono::nanoseconds interval,
              std::function<void()> call)
        : mainThread_(std::move(mainThread)), interval_(interval),
          call_(std::make_shared<std::function<void()>>(std::move(call))) {}
    ~Repeating() { stop(); }
    Repeating(const Repeating&) = delete;
    Repeating& operator=(const Repeating&) = delete;

    /// The first call comes one interval later, also if it is already running.
    void start() {
        stop();
        timer_ = mainThread_->after(interval_, [this, weak = std::weak_ptr(call_)] {
            const auto call = weak.lock();
            if (!call) return;
            (*call)();
            if (call.use_count() > 1 && timer_) start();
        });
    }
    void stop() {
        if (timer_) timer_->cancel();
        timer_.reset();
    }

  private:
    const std::shared_ptr<platform::MainThread> mainThread_;
    const std::chrono::nanoseconds interval_;
    const std::shared_ptr<std::function<void()>> call_;
    std::shared_ptr<platform::Timer> timer_;
};

} // namespace orvane
