#pragma once

#include <atomic>
#include <thread>

namespace orvane::test {

/// Counts the allocations of all threads but one: a measure of their work that depends neither on the machine
/// nor on its load. Not counted with sanitizers, which have their own allocators (`isCounted`).
struct AllocatedWork {
#ifdef ORVANE_SANITIZED
    static constexpr bool isCounted = false;
#else
    static constexpr bool isCounted = true;
#endif

    /// Counts from 0 on. The thread that makes the allocation of number `holdAt` waits there; 0: none waits.
    static void begin(long holdAt, std::thread::id uncounted = std::this_thread::get_id()) {
        uncounted_ = uncounted;
        count_ = 0;
        holdAt_ = holdAt;
        isHeld_ = false;
        isCounting_ = true;
    }
    static bool isHeld() { return isHeld_; }
    /// The held work continues and is counted from 0 again.
    static void release() {
        count_ = holdAt_ = 0;
        isHeld_ = false;
        isHeld_.notify_all();
    }
    static long end() {
        isCounting_ = false;
        return count_;
    }
    /// Called for each allocation of the process.
    static void add() {
        if (!isCounting_ || std::this_thread::get_id() == uncounted_ || ++count_ != holdAt_) return;
        isHeld_ = true;
        isHeld_.wait(true);
    }

  private:
    static inline std::atomic<bool> isCounting_ = false;
    static inline std::atomic<long> count_ = 0;
    static inline std::atomic<long> holdAt_ = 0;
    static inline std::atomic<bool> isHeld_ = false;
    static inline std::thread::id uncounted_;
};

} // namespace orvane::test
