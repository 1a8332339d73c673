#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>

namespace orvane::cli {

/// Limits the number and the bytes of messages that are read and not yet served. Further messages wait in the
/// pipe. Any thread.
class PendingMessageLimit {
  public:
    static constexpr std::size_t mostMessages = 256;
    /// A single message may be larger. Parsing a message takes several times as much memory.
    static constexpr std::size_t mostBytes = std::size_t{64} << 20U;

    /// Waits until the limit allows another message.
    void acquire(std::size_t bytes) {
        std::unique_lock lock(mutex_);
        freed_.wait(lock, [&] { return acquireIfFree(bytes); });
    }
    /// False, and counts nothing, while the limit allows no further message.
    bool tryAcquire(std::size_t bytes) {
        const std::lock_guard lock(mutex_);
        return acquireIfFree(bytes);
    }
    void release(std::size_t bytes) {
        {
            const std::lock_guard lock(mutex_);
            --messages_;
            bytes_ -= bytes;
        }
        freed_.notify_one();
    }

  private:
    bool acquireIfFree(std::size_t bytes) {
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
