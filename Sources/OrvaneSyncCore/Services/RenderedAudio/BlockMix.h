#pragma once

#include "OrvaneSyncCore/Models/SmartAudioResult.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace orvane {

/// Plays of each moment the track of the block that holds then, with the block's gain. Around the start of a
/// block the gains of its track and of the one before cross along 3u^2 - 2u^3, half of the ramp on either
/// side; between blocks shorter than the ramp it is as much shorter, so that each block is reached and no
/// level jumps. In a gap the block before stays. A block whose track the recording does not have is silent.
/// A sample of a magnitude of 0.7 or more becomes its hyperbolic tangent. One thread at a time.
class BlockMix {
  public:
    BlockMix(const std::vector<BlockDecision>& blocks, double rampSeconds, double sampleRate,
             int channelCount);

    /// The first channels of the recording that have to be read; at least one.
    int channelsNeeded() const;
    /// The next frames of the recording, of at least those channels.
    void mix(std::span<const float* const> channels, std::span<float> out);

  private:
    /// What is heard of the recording.
    struct Voice {
        int channel = -1; ///< from 0; -1: nothing
        double gain = 0;  ///< linear
    };
    struct Change {
        double startSeconds = 0; ///< of the block
        double halfRamp = 0;     ///< seconds
        std::int64_t from = 0;   ///< frames of the ramp
        std::int64_t to = 0;
        Voice voice; ///< behind it
    };

    void hold(const Voice& voice, std::span<const float* const> channels, std::span<float> out,
              std::size_t at) const;
    void cross(const Voice& old, const Change& change, std::span<const float* const> channels,
               std::span<float> out, std::size_t at) const;

    double sampleRate_;
    Voice voice_;
    std::vector<Change> changes_;
    std::size_t next_ = 0;   ///< in `changes_`
    std::int64_t frame_ = 0; ///< of the recording
};

} // namespace orvane
