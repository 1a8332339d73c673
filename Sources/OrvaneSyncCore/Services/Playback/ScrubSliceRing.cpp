#include "OrvaneSyncCore/Services/Playback/ScrubSliceRing.h"

#include <algorithm>

namespace orvane {

namespace {

constexpr std::size_t slotsToChooseFrom = 3; // one is played, one published, one free

class Lock {
  public:
    explicit Lock(std::atomic_flag& flag) : flag_(flag) {
        while (flag_.test_and_set(std::memory_order_acquire)) {
            // held for the time of five assignments
        }
    }
    ~Lock() { flag_.clear(std::memory_order_release); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

  private:
    std::atomic_flag& flag_;
};

} // namespace

ScrubSliceRing::ScrubSliceRing(std::size_t capacityFrames, std::size_t slotCount)
    : capacityFrames_(std::max<std::size_t>(capacityFrames, 1)),
      slotCount_(std::max<std::size_t>(slotCount, 1)), storage_(slotCount_ * 2 * capacityFrames_) {}

void ScrubSliceRing::publish(const AudioSlice& slice, float volume) {
    if (slice.channels.size() != 2 || slice.frameCount() == 0) return;
    const std::size_t frames = std::min(capacityFrames_, slice.frameCount());
    const auto isTaken = [&](std::size_t index) {
        const auto one = static_cast<std::ptrdiff_t>(index);
        return one == publishedSlot_ || one == playedSlot_;
    };
    if (slotCount_ >= slotsToChooseFrom)
        while (isTaken(writeSlot_)) writeSlot_ = (writeSlot_ + 1) % slotCount_;
    const auto index = static_cast<std::ptrdiff_t>(writeSlot_);
    writeSlot_ = (writeSlot_ + 1) % slotCount_;
    std::copy_n(slice.channels[0].begin(), frames, slot(index));
    std::copy_n(slice.channels[1].begin(), frames, slot(index) + capacityFrames_);
    publishedSlot_ = index;
    const Lock lock(lock_);
    published_ = {index, frames, std::clamp(volume, 0.0F, 1.0F), published_.generation + 1};
}

void ScrubSliceRing::silence() {
    const Lock lock(lock_);
    published_.slot = -1;
    published_.frames = 0;
    ++published_.generation;
}

void ScrubSliceRing::latch() noexcept {
    if (lock_.test_and_set(std::memory_order_acquire)) return;
    if (published_.generation != current_.generation) {
        current_ = published_;
        playedSlot_ = current_.slot;
        cursor_ = 0;
        const bool isSilent = current_.slot < 0 || current_.frames == 0;
        const float* samples = isSilent ? nullptr : slot(current_.slot);
        stepLeft_ = lastLeft_ - (isSilent ? 0 : samples[0] * current_.volume);
        stepRight_ = lastRight_ - (isSilent ? 0 : samples[capacityFrames_] * current_.volume);
        stepRemaining_ = declickFrames;
    }
    lock_.clear(std::memory_order_release);
}

void ScrubSliceRing::write(float& left, float& right, float sourceLeft, float sourceRight) noexcept {
    if (stepRemaining_ >= 1) {
        const float share = static_cast<float>(stepRemaining_) / declickFrames;
        sourceLeft += share * stepLeft_;
        sourceRight += share * stepRight_;
        --stepRemaining_;
    }
    left = lastLeft_ = sourceLeft;
    right = lastRight_ = sourceRight;
}

void ScrubSliceRing::render(float* left, float* right, std::size_t frames) noexcept {
    latch();
    std::size_t done = 0;
    if (current_.slot >= 0 && cursor_ < current_.frames) {
        const std::size_t some = std::min(frames, current_.frames - cursor_);
        const float* samples = slot(current_.slot) + cursor_;
        for (; done < some; ++done)
            write(left[done], right[done], current_.volume * samples[done],
                  current_.volume * samples[capacityFrames_ + done]);
        cursor_ += some;
    }
    for (; done < frames; ++done) write(left[done], right[done], 0, 0);
}

} // namespace orvane
