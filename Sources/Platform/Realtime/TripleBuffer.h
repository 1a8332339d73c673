#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <utility>

namespace orvane::platform {

/// Passes the newest value from one writing thread to one reading thread. A value that is not read in time is
/// replaced by the next. Neither side locks, allocates or waits.
template <class T>
class TripleBuffer {
  public:
    TripleBuffer() = default;
    explicit TripleBuffer(const T& first) : slots_{first, first, first} {}

    /// Writer: the value to fill in. It holds the value that was written two or three publications ago.
    T& draft() { return slots_[draft_]; }
    /// Writer: makes the draft the newest value.
    void publish() noexcept {
        draft_ = middle_.exchange(static_cast<std::uint8_t>(draft_ | fresh), std::memory_order_acq_rel) &
                 indexMask;
    }
    void publish(const T& value) {
        draft() = value;
        publish();
    }

    /// Reader: takes the newest value; false if there was none since the last call.
    bool update() noexcept {
        if ((middle_.load(std::memory_order_relaxed) & fresh) == 0) return false;
        current_ = middle_.exchange(current_, std::memory_order_acq_rel) & indexMask;
        return true;
    }
    /// Reader: the value that the last `update` took. It does not change until the next one.
    const T& current() const { return slots_[current_]; }

  private:
    static constexpr std::uint8_t fresh = 4; ///< the middle slot holds a value that was not read
    static constexpr std::uint8_t indexMask = 3;

    std::array<T, 3> slots_{};
    std::uint8_t draft_ = 0;               ///< the writer's slot
    std::atomic<std::uint8_t> middle_ = 1; ///< the slot between both, and whether it is fresh
    std::uint8_t current_ = 2;             ///< the reader's slot
};

} // namespace orvane::platform
