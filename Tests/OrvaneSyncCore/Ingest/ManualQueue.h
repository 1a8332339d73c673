#pragma once

#include "Platform/MainThread.h"

#include <chrono>
#include <functional>
#include <map>
#include <mutex>

namespace orvane::test {

/// A serial queue whose time the test advances. Posted work runs at once on the thread that posts; delayed
/// work runs when its time has come, or in the destructor.
class ManualQueue : public platform::SerialQueue {
  public:
    ~ManualQueue() override { advance(std::chrono::hours(1)); }
    void post(std::function<void()> work, std::stop_token /*stop*/) override { sync(work); }
    void sync(const std::function<void()>& work) override {
        const std::lock_guard lock(mutex_);
        work();
    }
    void after(std::chrono::nanoseconds delay, std::function<void()> work) override {
        const std::lock_guard lock(mutex_);
        later_.emplace(now_ + delay, std::move(work));
    }
    void advance(std::chrono::nanoseconds by) {
        const std::lock_guard lock(mutex_);
        now_ += by;
        while (!later_.empty() && later_.begin()->first <= now_) {
            const auto work = std::move(later_.begin()->second);
            later_.erase(later_.begin());
            work();
        }
    }

  private:
    std::recursive_mutex mutex_; // recursive: work may call `after`
    std::chrono::nanoseconds now_{0};
    std::multimap<std::chrono::nanoseconds, std::function<void()>> later_;
};

} // namespace orvane::test
