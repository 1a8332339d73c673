#pragma once

#include "OrvaneSyncCore/Services/Playback/ScrubSlice.h"
#include "Platform/Realtime/TripleBuffer.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace orvane {

/// Hands slices of sound from one producer to the callback that plays them: the newest one, from its first
/// frame, and silence behind it. Whatever is played when another comes, or silence, passes over into that
/// within `declickFrames`, without a click.
///
/// `publish` belongs to one thread at a time; `silence` to any, `render` to the callback. Nobody waits.
class ScrubSliceRing {
  public:
    static constexpr int declickFrames = 32;

    /// `capacityFrames`: the longest slice, at least 1.
    explicit ScrubSliceRing(std::size_t capacityFrames);

    /// Hands over a slice of two channels; a longer one is cut. Anything else is ignored. `volume`: linear,
    /// brought within 0 and 1.
    void publish(const AudioSlice& slice, float volume);
    /// Ends what was published before.
    void silence();
    /// Fills both arrays.
    void render(float* left, float* right, std::size_t frames) noexcept;

    std::size_t capacityFrames() const { return capacityFrames_; }

  private:
    struct Slice {
        std::vector<float> left, right; ///< of `capacityFrames_`
        std::size_t frames = 0;
        float volume = 1;
        std::uint64_t number = 0; ///< counts the publications, from 1
    };
    static Slice empty(std::size_t frames) {
        return {std::vector<float>(frames), std::vector<float>(frames)};
    }
    void latch() noexcept;
    void write(float& left, float& right, float sourceLeft, float sourceRight) noexcept;

    const std::size_t capacityFrames_;
    platform::TripleBuffer<Slice> slices_;
    std::atomic<std::uint64_t> published_ = 0; ///< the number of the newest slice
    std::atomic<std::uint64_t> silenced_ = 0;  ///< slices up to this number are not heard

    // Callback.
    bool isSilent_ = true;
    std::size_t cursor_ = 0;             ///< next frame of the slice
    float stepLeft_ = 0, stepRight_ = 0; ///< the jump to smooth away
    int stepRemaining_ = 0;
    float lastLeft_ = 0, lastRight_ = 0;
};

} // namespace orvane
