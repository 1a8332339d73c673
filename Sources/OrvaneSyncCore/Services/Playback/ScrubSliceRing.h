#pragma once

#include "OrvaneSyncCore/Services/Playback/ScrubSlice.h"
#include "Platform/Realtime/TripleBuffer.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace orvane {

/// Passes slices of sound from one producer to the callback that plays them. The newest slice is played from
/// its first frame, and silence after it. The change to another slice or to silence is smoothed over
/// `declickFrames` frames, so that it does not click.
///
/// `publish` is called by one thread at a time, `silence` by any thread, `render` by the callback. None of
/// them waits.
class ScrubSliceRing {
  public:
    static constexpr int declickFrames = 32;

    /// `capacityFrames`: the length of the longest slice, at least 1.
    explicit ScrubSliceRing(std::size_t capacityFrames);

    /// Plays a slice of two channels; a longer one is cut. Other slices are ignored. `volume`: linear,
    /// clamped to 0 to 1.
    void publish(const AudioSlice& slice, float volume);
    /// Ends the slice that is playing.
    void silence();
    /// Fills both arrays.
    void render(float* left, float* right, std::size_t frames) noexcept;

    std::size_t capacityFrames() const { return capacityFrames_; }

  private:
    struct Slice {
        std::vector<float> left, right; ///< `capacityFrames_` samples each
        std::size_t frames = 0;
        float volume = 1;
        std::uint64_t number = 0; ///< counts the slices that were published, from 1
    };
    static Slice empty(std::size_t frames) {
        return {std::vector<float>(frames), std::vector<float>(frames)};
    }
    void latch() noexcept;
    void write(float& left, float& right, float sourceLeft, float sourceRight) noexcept;

    const std::size_t capacityFrames_;
    platform::TripleBuffer<Slice> slices_;
    std::atomic<std::uint64_t> published_ = 0; ///< the number of the newest slice
    std::atomic<std::uint64_t> silenced_ = 0;  ///< slices up to this number are not played

    // The members below are used in the callback only.
    bool isSilent_ = true;
    std::size_t cursor_ = 0;             ///< next frame of the slice
    float stepLeft_ = 0, stepRight_ = 0; ///< the step in level to smooth
    int stepRemaining_ = 0;
    float lastLeft_ = 0, lastRight_ = 0;
};

} // namespace orvane
