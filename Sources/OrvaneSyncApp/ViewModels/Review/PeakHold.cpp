#include "OrvaneSyncApp/ViewModels/Review/PeakHold.h"

#include "OrvaneSyncCore/Services/Playback/AudioLevels.h"

#include <algorithm>

namespace orvane {

void PeakHold::update(std::span<const platform::ChannelPeak> heard, double now) {
    if (channels_.size() < heard.size()) channels_.resize(heard.size());
    const double passed = std::max(now - updatedAt_, 0.0);
    updatedAt_ = now;
    for (std::size_t i = 0; i < channels_.size(); ++i) {
        Channel& channel = channels_[i];
        const platform::ChannelPeak level = i < heard.size() ? heard[i] : platform::ChannelPeak();
        const ChannelLevel measured = ChannelLevel::measured(static_cast<int>(i), level);
        channel.isClipped = channel.isClipped || level.peak >= 1;
        if (measured.peakDB >= channel.peakDB) {
            channel.peakDB = measured.peakDB;
            channel.since = now;
        } else if (now - channel.since > holdSeconds) {
            channel.peakDB = std::max<double>(channel.peakDB - fallPerSecond * passed, measured.peakDB);
        }
    }
}

} // namespace orvane
