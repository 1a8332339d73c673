#pragma once

#include "Platform/Playback/Player.h"

#include <span>
#include <string>
#include <vector>

namespace orvane {

/// What the meter of a channel shows.
struct ChannelLevel {
    int channel = 0;  ///< from 0
    float peak = 0;   ///< of the meter, which spans -60 to 0 dBFS: 0 to 1
    float rms = 0;    ///< likewise
    float peakDB = 0; ///< dBFS
    float rmsDB = 0;

    /// Of linear levels, full scale at 1; -200 dBFS is the lowest.
    static ChannelLevel measured(int channel, platform::ChannelPeak level);
};

struct AudioLevels {
    std::vector<ChannelLevel> channels;
    int channelCount = 0;
    double timestamp = 0; ///< seconds of the players' clock

    static const AudioLevels empty;

    /// As recordings with so many channels name them: "L", "LFE", "CH3".
    static std::string channelName(int index, int count);
};
inline const AudioLevels AudioLevels::empty{};

/// Takes what was measured of a cycle into what is shown: of each channel that is there already, `smoothing`
/// of the old values stays.
void smooth(std::vector<ChannelLevel>& shown, std::span<const platform::ChannelPeak> measured,
            float smoothing);

} // namespace orvane
