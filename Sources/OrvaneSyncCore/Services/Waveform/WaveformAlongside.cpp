#include "OrvaneSyncCore/Services/Waveform/WaveformAlongside.h"

#include <utility>

namespace orvane {

WaveformAlongside::WaveformAlongside(TakeSound sound, std::shared_ptr<WaveformCache> cache)
    : sound_(std::move(sound)), cache_(std::move(cache)) {
    if (cache_) place_ = WaveformCache::placeOf(sound_, WaveformReduction::reviewBins);
    if (place_ && cache_->contains(*place_)) place_.reset();
}

std::vector<AudioListener*> WaveformAlongside::listeners(const platform::AudioFile& file,
                                                         std::size_t channels) {
    if (!place_ || std::cmp_not_equal(channels, file.channelCount())) return {};
    return {&reduction_.emplace(file, WaveformReduction::reviewBins)};
}

void WaveformAlongside::keep() {
    if (reduction_ && reduction_->isWhole())
        cache_->store(*place_, sound_, WaveformReduction::reviewBins, reduction_->take());
}

} // namespace orvane
