#pragma once

#include "OrvaneSyncCore/Services/Playback/ScrubSlice.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace orvane {

/// Hands slices of sound from one producer to the callback that plays them: the newest one, from its first
/// frame, and silence behind it. Whatever is played when another comes, or silence, passes over into that
/// within `declickFrames`, without a click.
///
/// `publish` belongs to one thread at a time; `silence` to any, `render` to the callback. The callback never
/// waits: where the lock over the five published values is held it goes on, and sees them at its next call.
class ScrubSliceRing {
  public:
    static constexpr int declickFrames = 32;
    static constexpr std::size_t defaultSlotCount = 16;

    /// `capacityFrames`: the longest slice. Both are at least 1.
    explicit ScrubSliceRing(std::size_t capacityFrames, std::size_t slotCount = defaultSlotCount);

    /// Hands over a slice of two channels; a longer one is cut. Anything else is ignored. `volume`: linear,
    /// brought within 0 and 1.
    void publish(const AudioSlice& slice, float volume);
    void silence();
    /// Fills both arrays.
    void render(float* left, float* right, std::size_t frames) noexcept;

    std::size_t capacityFrames() const { return capacityFrames_; }

  private:
    struct Published {
        std::ptrdiff_t slot = -1; ///< -1: silence
        std::size_t frames = 0;
        float volume = 1;
        std::uint64_t generation = 0; ///< grows with each publication
    };
    void latch() noexcept;
    float* slot(std::ptrdiff_t index) {
        return storage_.data() + static_cast<std::size_t>(index) * 2 * capacityFrames_;
    }
    void write(float& left, float& right, float sourceLeft, float sourceRight) noexcept;

    const std::size_t capacityFrames_;
    const std::size_t slotCount_;
    std::vector<float> storage_; ///< of each slot all samples of the left, then those of the right
    std::atomic_flag lock_ = ATOMIC_FLAG_INIT;
    Published published_; ///< under the lock

    // Producer. A slot that is published or played is left alone where there are enough.
    std::size_t writeSlot_ = 0;
    std::ptrdiff_t publishedSlot_ = -1;
    std::atomic<std::ptrdiff_t> playedSlot_ = -1; ///< written by the callback

    // Callback.
    Published current_;
    std::size_t cursor_ = 0;             ///< next frame of the slice
    float stepLeft_ = 0, stepRight_ = 0; ///< the jump to smooth away
    int stepRemaining_ = 0;
    float lastLeft_ = 0, lastRight_ = 0;
};

} // namespace orvane
