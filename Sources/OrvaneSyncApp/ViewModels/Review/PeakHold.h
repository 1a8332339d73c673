#pragma once

#include "Platform/Playback/Player.h"

#include <span>
#include <vector>

namespace orvane {

/// What the meters keep of the loudest moments: the highest peak stands for a while and then falls, and a
/// channel that reached full scale is marked until somebody has seen it. A plain value.
class PeakHold {
  public:
    static constexpr double holdSeconds = 1.5;
    static constexpr double fallPerSecond = 20; ///< dB

    struct Channel {
        double peakDB = -200; ///< dBFS
        bool isClipped = false;
        double since = 0; ///< seconds of the same clock as `now`

        bool operator==(const Channel&) const = default;
    };
    /// `now`: seconds of a clock that never goes back.
    void update(std::span<const platform::ChannelPeak> heard, double now);
    /// Another clip, or somebody has seen the marks.
    void clear() { channels_.clear(); }
    const std::vector<Channel>& channels() const { return channels_; }

  private:
    std::vector<Channel> channels_;
    double updatedAt_ = 0;
};

} // namespace orvane
