#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>

namespace orvane::cli {

/// What messages take that were read and not yet served. Those beyond wait in the pipe until there is room.
/// Any thread.
class MessageRoom {
  public:
    static constexpr std::size_t mostMessages = 256;
    /// One alone may take more. What is made of a message takes several times as much.
    static constexpr std::size_t mostBytes = std::size_t{64} << 20U;

    /// Waits until there is room.
    void take(std::size_t bytes) {
        std::unique_lock lock(mutex_);
        freed_.wait(lock, [&] { return takeIfFree(bytes); });
    }
    /// False, and nothing is taken, while there is none.
    bool tryTake(std::size_t bytes) {
        const std::lock_guard lock(mutex_);
        return takeIfFree(bytes);
    }
    void giveBack(std::size_t bytes) {
        {
            const std::lock_guard lock(mutex_);
            --messages_;
            bytes_ -= bytes;
        }
        freed_.notify_one();
    }

  private:
    bool takeIfFree(std::size_t bytes) {
        if (messages_ > 0 && (messages_ >= mostMessages || bytes_ + bytes > mostBytes)) return false;
        ++messages_;
        bytes_ += bytes;
        return true;
    }

    std::mutex mutex_;
    std::condition_variable freed_;
    std::size_t messages_ = 0, bytes_ = 0;
};

} // namespace orvane::cli
