#pragma once

#include "OrvaneSyncCore/Models/IXMLModels.h"
#include "OrvaneSyncCore/Models/SmartAudioResult.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// Summary of one channel's signal.
struct ChannelStats {
    int trackIndex = 0;       ///< from 1
    float averageRMS = 0;     ///< mean of the window RMS values, linear
    float peakRMS = 0;        ///< highest window peak, linear
    float spectralWidth = 0;  ///< mean zero-crossing rate, crossings per sample
    float dynamicRangeDB = 0; ///< peak over average
    float speechRatio = 0;    ///< share of windows with speech, 0 to 1

    bool operator==(const ChannelStats&) const = default;
};

/// Decides the role of each channel of a recording: by the recorder's track names if there are any, otherwise
/// by the signal. Pure; any thread; never fails.
namespace ChannelClassifier {

/// One classification for each channel, in channel order; none if `channelCount` is below 1. Names of
/// channels beyond the count are not used, but show that the recorder names its channels.
std::vector<ChannelClassification> classify(int channelCount, const std::vector<IXMLTrack>& ixmlTracks,
                                            const std::vector<ChannelStats>& perChannelStats);

/// Whether the role was guessed from the signal because the recorder gave the track no name.
bool isGuessed(const ChannelClassification& classification);

/// Whether the roles of these tracks were guessed from the signal and all tracks that were analysed became
/// booms: a role that all have distinguishes none.
bool areGuessedBoomsAlone(const std::vector<ChannelClassification>& classifications);

/// Lower case. Absent if the name describes only the microphone.
std::optional<std::string> extractSpeakerName(std::string_view trackName);

} // namespace ChannelClassifier
} // namespace orvane
