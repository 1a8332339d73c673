#pragma once

#include "OrvaneSyncCore/Models/SmartAudioResult.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace orvane {

/// Plays at each moment the track of the current block with the block's gain. At the start of a block there
/// is a crossfade from the track before, along 3u^2 - 2u^3, with half of the ramp on either side. Between
/// blocks that are shorter than the ramp the crossfade is shorter, so that each block is reached and levels
/// do not jump. In a gap the block before it continues. A block whose track does not exist in the recording
/// is silent. A sample with a magnitude of 0.7 or more becomes its hyperbolic tangent. One thread at a time.
class BlockMix {
  public:
    BlockMix(const std::vector<BlockDecision>& blocks, double rampSeconds, double sampleRate,
             int channelCount);

    /// The number of channels, from the first, that must be read; at least one.
    int channelsNeeded() const;
    /// Mixes the next frames of the recording, with at least that many channels.
    void mix(std::span<const float* const> channels, std::span<float> out);

  private:
    /// The channel that is played, with its gain.
    struct Voice {
        int channel = -1; ///< from 0; -1: silence
        double gain = 0;  ///< linear
    };
    struct Change {
        double startSeconds = 0; ///< start of the block
        double halfRamp = 0;     ///< seconds
        std::int64_t from = 0;   ///< first frame of the crossfade
        std::int64_t to = 0;
        Voice voice; ///< the voice after it
    };

    void hold(const Voice& voice, std::span<const float* const> channels, std::span<float> out,
              std::size_t at) const;
    void cross(const Voice& old, const Change& change, std::span<const float* const> channels,
               std::span<float> out, std::size_t at) const;

    double sampleRate_;
    Voice voice_;
    std::vector<Change> changes_;
    std::size_t next_ = 0;   ///< index in `changes_`
    std::int64_t frame_ = 0; ///< position in the recording
};

} // namespace orvane
