#pragma once

#include "OrvaneSyncCore/Models/IXMLModels.h"
#include "OrvaneSyncCore/Models/SmartAudioResult.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// The signal of one channel in summary.
struct ChannelStats {
    int trackIndex = 0;       ///< from 1
    float averageRMS = 0;     ///< mean of the window RMS values, linear
    float peakRMS = 0;        ///< highest window peak, linear
    float spectralWidth = 0;  ///< mean zero-crossing rate, crossings per sample
    float dynamicRangeDB = 0; ///< peak over average
    float speechRatio = 0;    ///< share of windows with speech, 0 to 1

    bool operator==(const ChannelStats&) const = default;
};

/// Decides what each channel of a recording is: by the recorder's track names where there are any, by the
/// signal otherwise. Pure; any thread; has no failures.
namespace ChannelClassifier {

/// One classification a channel, in channel order; none for a `channelCount` below 1. Names of channels
/// beyond the count are of no use but tell that the recorder names its channels.
std::vector<ChannelClassification> classify(int channelCount, const std::vector<IXMLTrack>& ixmlTracks,
                                            const std::vector<ChannelStats>& perChannelStats);

/// Whether the role comes from the signal, since the recorder gave the track no name.
bool isGuessed(const ChannelClassification& classification);

/// Whether the roles of these tracks were guessed from the signal, and each track that was listened to came
/// out as a boom: what is said of all tells none from another.
bool areGuessedBoomsAlone(const std::vector<ChannelClassification>& classifications);

/// Lower case. Nothing where the name only says what the microphone is.
std::optional<std::string> extractSpeakerName(std::string_view trackName);

} // namespace ChannelClassifier
} // namespace orvane
