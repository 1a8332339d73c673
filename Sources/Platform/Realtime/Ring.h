#pragma once

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstddef>
#include <span>
#include <type_traits>
#include <vector>

namespace orvane::platform {

/// A queue of values between one producing and one consuming thread. After its construction it neither
/// allocates nor locks nor waits; every operation takes constant time for each value. A value that was
/// written is seen whole by the reader, and everything that the producer wrote to memory before it.
template <class T>
class Ring {
    static_assert(std::is_nothrow_copy_assignable_v<T>);

  public:
    /// Room for at least `capacity` values.
    explicit Ring(std::size_t capacity) : values_(std::bit_ceil(std::max<std::size_t>(capacity, 1))) {}

    std::size_t capacity() const { return values_.size(); }

    /// Producer: how many values there is room for. The room may grow at any moment, never shrink.
    std::size_t writable() const {
        return capacity() -
               (written_.load(std::memory_order_relaxed) - read_.load(std::memory_order_acquire));
    }
    /// Producer: takes as many of the values as there is room for, the first ones, and returns their number.
    std::size_t write(std::span<const T> values) noexcept {
        const std::size_t count = std::min(values.size(), writable());
        const std::size_t at = written_.load(std::memory_order_relaxed);
        for (std::size_t i = 0; i < count; ++i) slot(at + i) = values[i];
        written_.store(at + count, std::memory_order_release);
        return count;
    }

    /// Consumer: how many values can be read. The number may grow at any moment, never shrink.
    std::size_t readable() const {
        return written_.load(std::memory_order_acquire) - read_.load(std::memory_order_relaxed);
    }
    /// Consumer: fills `values` from its start with the oldest ones and returns their number.
    std::size_t read(std::span<T> values) noexcept {
        const std::size_t count = std::min(values.size(), readable());
        const std::size_t at = read_.load(std::memory_order_relaxed);
        for (std::size_t i = 0; i < count; ++i) values[i] = slot(at + i);
        read_.store(at + count, std::memory_order_release);
        return count;
    }
    /// Consumer: drops up to `count` of the oldest values and returns their number.
    std::size_t skip(std::size_t count) noexcept {
        count = std::min(count, readable());
        read_.store(read_.load(std::memory_order_relaxed) + count, std::memory_order_release);
        return count;
    }

  private:
    // Counters that only grow; their difference stays right when they wrap around.
    static constexpr std::size_t cacheLine = 64;

    T& slot(std::size_t index) { return values_[index & (values_.size() - 1)]; }

    std::vector<T> values_;
    alignas(cacheLine) std::atomic<std::size_t> written_ = 0;
    alignas(cacheLine) std::atomic<std::size_t> read_ = 0;
};

} // namespace orvane::platform
