#pragma once

#include "Platform/Playback/Player.h"

#include <span>
#include <string>
#include <vector>

namespace orvane {

/// The values of a channel's meter.
struct ChannelLevel {
    int channel = 0;  ///< from 0
    float peak = 0;   ///< 0 to 1, for -60 to 0 dBFS
    float rms = 0;    ///< the same scale
    float peakDB = 0; ///< dBFS
    float rmsDB = 0;

    /// From linear levels, full scale at 1; the lowest result is -200 dBFS.
    static ChannelLevel measured(int channel, platform::ChannelPeak level);
};

struct AudioLevels {
    std::vector<ChannelLevel> channels;
    int channelCount = 0;
    double timestamp = 0; ///< seconds of the players' clock

    static const AudioLevels empty;

    /// The name in a recording with that many channels: "L", "LFE", "CH3".
    static std::string channelName(int index, int count);
};
inline const AudioLevels AudioLevels::empty{};

/// Updates the shown levels by the measured ones: for each channel that is already shown, the share
/// `smoothing` of the old values is kept.
void smooth(std::vector<ChannelLevel>& shown, std::span<const platform::ChannelPeak> measured,
            float smoothing);

} // namespace orvane
