#pragma once

#include "OrvaneSyncCore/Services/Persistence/CachedFiles.h"
#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformResult.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace orvane {

/// Waveforms of earlier reductions. A waveform is used as long as the files of its take have the same size
/// and date. Only for speed: after any failure a recording is just read again. Any thread that may wait.
class WaveformCache {
  public:
    static constexpr std::uint64_t usualMostBytes = std::uint64_t{512} << 20U;

    explicit WaveformCache(std::string folder, std::uint64_t mostBytes = usualMostBytes);
    /// The cache of the user's account, below the caches directory.
    static std::shared_ptr<WaveformCache> shared();

    /// The key of a waveform: the present attributes of the take's files, and the number of bins.
    struct Place {
        std::string key;
    };
    /// Absent if a file's attributes cannot be read.
    static std::optional<Place> placeOf(const TakeSound& sound, std::size_t totalBins);

    /// Whether there is a file, which may be damaged.
    bool contains(const Place& place) const { return files_.contains(place.key); }
    std::optional<WaveformResult> find(const Place& place) const;
    /// Does nothing if the files have changed since.
    void store(const Place& place, const TakeSound& sound, std::size_t totalBins,
               const WaveformResult& waveform);

  private:
    CachedFiles files_;
};

} // namespace orvane
