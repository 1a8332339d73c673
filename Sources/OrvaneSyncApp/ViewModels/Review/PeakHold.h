#pragma once

#include "Platform/Playback/Player.h"

#include <span>
#include <vector>

namespace orvane {

/// The recent peaks of the meters: the highest peak is held for a while and then falls, and a channel that
/// reached full scale stays marked until the user clears the mark. A plain value.
class PeakHold {
  public:
    static constexpr double holdSeconds = 1.5;
    static constexpr double fallPerSecond = 20; ///< dB

    struct Channel {
        double peakDB = -200; ///< dBFS
        bool isClipped = false;
        double since = 0; ///< seconds of the clock of `now`

        bool operator==(const Channel&) const = default;
    };
    /// `now`: seconds of a monotonic clock.
    void update(std::span<const platform::ChannelPeak> heard, double now);
    /// To be called for another clip, or when the user clears the marks.
    void clear() { channels_.clear(); }
    const std::vector<Channel>& channels() const { return channels_; }

  private:
    std::vector<Channel> channels_;
    double updatedAt_ = 0;
};

} // namespace orvane
