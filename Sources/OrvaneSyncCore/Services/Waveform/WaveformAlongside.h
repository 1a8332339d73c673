#pragma once

#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformCache.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformReduction.h"

#include <memory>
#include <optional>
#include <vector>

namespace orvane {

/// Has the review's waveform reduced into the cache while something else listens to a take, unless it is
/// there already. One thread that may wait.
class WaveformAlongside {
  public:
    /// `cache`: null for none, and nothing is reduced.
    WaveformAlongside(TakeSound sound, std::shared_ptr<WaveformCache> cache);

    /// What has to hear the pass: nobody where it leaves channels out.
    std::vector<AudioListener*> listeners(const platform::AudioFile& file, std::size_t channels);
    /// Once the pass is over and all files were there.
    void keep();

  private:
    TakeSound sound_;
    std::shared_ptr<WaveformCache> cache_;
    std::optional<WaveformCache::Place> place_;
    std::optional<WaveformReduction> reduction_;
};

} // namespace orvane
