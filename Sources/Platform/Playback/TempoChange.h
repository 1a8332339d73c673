#pragma once

#include <cstddef>
#include <memory>

namespace orvane::platform {

/// Changes how fast sound runs and keeps its pitch. Two channels, interleaved. The first frame that comes out
/// is the first that was put in; what follows lies within some milliseconds of its place. One thread.
class TempoChange {
  public:
    struct Options {
        double sampleRate = 48000; ///< Hz, of both sides
        double tempo = 1;          ///< frames in for each frame out, from 0.1 to 4
        bool isQuick = false;      ///< less work for less quality
    };
    virtual ~TempoChange() = default;
    virtual void put(const float* frames, std::size_t count) = 0;
    /// The next frames, as many as there are; more come when more is put in.
    virtual std::size_t take(float* frames, std::size_t most) = 0;
};

} // namespace orvane::platform
