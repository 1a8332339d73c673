#pragma once

#include <semaphore.h>

namespace orvane::platform {

/// Wakes one waiting thread. Posting neither locks nor allocates, so the callback of an audio device can do
/// it. Posts are counted: each lets one wait return.
class Signal {
  public:
    Signal() { sem_init(&semaphore_, 0, 0); }
    ~Signal() { sem_destroy(&semaphore_); }
    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;

    void post() noexcept { sem_post(&semaphore_); }
    void wait() noexcept {
        while (sem_wait(&semaphore_) != 0) {
            // interrupted by a signal
        }
    }
    /// Discards posts for which no wait has returned.
    void clear() noexcept {
        while (sem_trywait(&semaphore_) == 0) {
        }
    }

  private:
    sem_t semaphore_{};
};

} // namespace orvane::platform
