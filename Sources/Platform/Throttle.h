#pragma once

#include "Platform/MainThread.h"

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace orvane::platform {

/// Passes on the latest of many values, at most once in an interval: the first at once, the last always.
/// `give` is called on the interface thread, as long as the throttle exists. Values come from any thread.
template <class Value>
class Throttle : public std::enable_shared_from_this<Throttle<Value>> {
  public:
    using Give = std::function<void(Value)>;

    static std::shared_ptr<Throttle> create(std::shared_ptr<MainThread> mainThread,
                                            std::shared_ptr<const Clock> clock,
                                            std::chrono::nanoseconds interval, Give give) {
        return std::shared_ptr<Throttle>(
            new Throttle(std::move(mainThread), std::move(clock), interval, std::move(give)));
    }

    void post(Value value) {
        std::unique_lock lock(mutex_);
        waiting_ = std::move(value);
        if (isUnderWay_) return;
        const auto rest = last_ ? *last_ + interval_ - clock_->now() : std::chrono::nanoseconds(0);
        if (rest <= std::chrono::nanoseconds(0) && mainThread_->isCurrent()) {
            lock.unlock();
            return flush();
        }
        isUnderWay_ = true;
        auto deliver = [weak = this->weak_from_this()] {
            const auto self = weak.lock();
            if (!self) return;
            {
                const std::lock_guard own(self->mutex_);
                self->isUnderWay_ = false;
            }
            self->flush();
        };
        if (rest > std::chrono::nanoseconds(0))
            mainThread_->after(rest, std::move(deliver));
        else
            mainThread_->post(std::move(deliver));
    }

    /// Passes on the waiting value at once, before something that must come after it. Interface thread.
    void flush() {
        std::optional<Value> value;
        {
            const std::lock_guard lock(mutex_);
            value = std::exchange(waiting_, std::nullopt);
            if (value) last_ = clock_->now();
        }
        if (value && give_) give_(*std::move(value));
    }
    /// Discards the waiting value. Interface thread.
    void drop() {
        const std::lock_guard lock(mutex_);
        waiting_.reset();
    }
    /// Passes on no more values, even if threads still post some. Interface thread.
    void close() { give_ = nullptr; }

  private:
    Throttle(std::shared_ptr<MainThread> mainThread, std::shared_ptr<const Clock> clock,
             std::chrono::nanoseconds interval, Give give)
        : mainThread_(std::move(mainThread)), clock_(std::move(clock)), interval_(interval),
          give_(std::move(give)) {}

    const std::shared_ptr<MainThread> mainThread_;
    const std::shared_ptr<const Clock> clock_;
    const std::chrono::nanoseconds interval_;
    Give give_; ///< of the interface thread
    std::mutex mutex_;
    std::optional<Value> waiting_;
    bool isUnderWay_ = false; ///< a call on the interface thread is pending
    std::optional<std::chrono::nanoseconds> last_;
};

/// How often progress is shown at most.
inline constexpr std::chrono::nanoseconds progressInterval =
    std::chrono::nanoseconds(std::chrono::seconds(1)) / 30;

} // namespace orvane::platform
