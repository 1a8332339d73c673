#pragma once

#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformCache.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformReduction.h"

#include <memory>
#include <optional>
#include <vector>

namespace orvane {

/// Reduces the review's waveform into the cache while a take is read for something else, unless it is already
/// there. One thread that may wait.
class WaveformAlongside {
  public:
    /// `cache` may be null; then nothing is reduced.
    WaveformAlongside(TakeSound sound, std::shared_ptr<WaveformCache> cache);

    /// The listener to add to the pass; none if the pass leaves out channels.
    std::vector<AudioListener*> listeners(const platform::AudioFile& file, std::size_t channels);
    /// Call when the pass is over and all files were complete.
    void keep();

  private:
    TakeSound sound_;
    std::shared_ptr<WaveformCache> cache_;
    std::optional<WaveformCache::Place> place_;
    std::optional<WaveformReduction> reduction_;
};

} // namespace orvane
