#include "OrvaneSyncApp/ViewModels/Timeline/RecordedLevels.h"

#include "OrvaneSyncApp/ViewModels/Timeline/TimelineRows.h"
#include "OrvaneSyncCore/Services/Takes/ClipSound.h"

#include <algorithm>
#include <cstddef>

namespace orvane {

std::vector<platform::ChannelPeak> recordedLevels(const SyncGroup& clip, const SmartAudioState& smartAudio,
                                                  const WaveformResult& waveform, double clipSeconds) {
    if (clip.isMOS()) return {};
    const auto channels = timelineChannels(clip, smartAudio);
    std::vector<platform::ChannelPeak> levels(channels.size());
    const double bin = (clipSeconds - ClipSound(clip).offsetSeconds) * waveform.binsPerSecond;
    const std::size_t known = std::min(channels.size(), waveform.peaksPerChannel.size());
    for (std::size_t i = 0; i < known; ++i)
        if (channels[i].isHeard() && bin >= 0 &&
            bin < static_cast<double>(waveform.peaksPerChannel[i].size())) {
            const auto at = static_cast<std::size_t>(bin);
            levels[i] = {waveform.peaksPerChannel[i][at], waveform.rmsPerChannel[i][at]};
        }
    return levels;
}

} // namespace orvane
