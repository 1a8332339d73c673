#pragma once

#include <cstddef>
#include <memory>

namespace orvane::platform {

/// Changes the speed of sound and keeps its pitch. Two channels, interleaved. The first output frame is the
/// first input frame; later ones are within some milliseconds of their place. One thread.
class TempoChange {
  public:
    struct Options {
        double sampleRate = 48000; ///< Hz, of input and output
        double tempo = 1;          ///< frames in for each frame out, from 0.1 to 4
        bool isQuick = false;      ///< less work for less quality
    };
    virtual ~TempoChange() = default;
    virtual void put(const float* frames, std::size_t count) = 0;
    /// The next output frames, as many as are ready; more follow after more input.
    virtual std::size_t take(float* frames, std::size_t most) = 0;
};

} // namespace orvane::platform
