#include "OrvaneSyncCore/Services/Playback/ScrubSliceRing.h"

#include <algorithm>

namespace orvane {

ScrubSliceRing::ScrubSliceRing(std::size_t capacityFrames)
    : capacityFrames_(std::max<std::size_t>(capacityFrames, 1)), slices_(empty(capacityFrames_)) {}

void ScrubSliceRing::publish(const AudioSlice& slice, float volume) {
    if (slice.channels.size() != 2 || slice.frameCount() == 0) return;
    Slice& draft = slices_.draft();
    draft.frames = std::min(capacityFrames_, slice.frameCount());
    std::copy_n(slice.channels[0].begin(), draft.frames, draft.left.begin());
    std::copy_n(slice.channels[1].begin(), draft.frames, draft.right.begin());
    draft.volume = std::clamp(volume, 0.0F, 1.0F);
    draft.number = ++published_;
    slices_.publish();
}

void ScrubSliceRing::silence() {
    const std::uint64_t upTo = published_;
    std::uint64_t before = silenced_;
    while (before < upTo && !silenced_.compare_exchange_weak(before, upTo)) {
        // another thread has silenced the slices up to `before`
    }
}

void ScrubSliceRing::latch() noexcept {
    const bool isNew = slices_.update();
    const Slice& slice = slices_.current();
    const bool isSilent = slice.number <= silenced_;
    if (!isNew && isSilent == isSilent_) return;
    isSilent_ = isSilent;
    cursor_ = 0;
    stepLeft_ = lastLeft_ - (isSilent ? 0 : slice.left[0] * slice.volume);
    stepRight_ = lastRight_ - (isSilent ? 0 : slice.right[0] * slice.volume);
    stepRemaining_ = declickFrames;
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
    const Slice& slice = slices_.current();
    std::size_t done = 0;
    if (!isSilent_) {
        const std::size_t some = std::min(frames, slice.frames - cursor_);
        for (; done < some; ++done, ++cursor_)
            write(left[done], right[done], slice.volume * slice.left[cursor_],
                  slice.volume * slice.right[cursor_]);
    }
    for (; done < frames; ++done) write(left[done], right[done], 0, 0);
}

} // namespace orvane
