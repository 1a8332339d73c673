#pragma once

#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformResult.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace orvane {

/// Waveforms of earlier reductions, a file each in one folder, each as long as the files of its take are the
/// same by size and date. A pure speed-up: whatever goes wrong only means that a recording is read again. Any
/// thread that may wait.
class WaveformCache {
  public:
    static constexpr std::uint64_t usualMostBytes = std::uint64_t{512} << 20U;

    /// Once the folder holds more than `mostBytes`, the files that were written longest ago go.
    explicit WaveformCache(std::string folder, std::uint64_t mostBytes = usualMostBytes);
    /// That of the user account, below the caches directory.
    static std::shared_ptr<WaveformCache> shared();

    /// What a waveform is kept under: the take's files as they are at this moment, and the number of bins.
    struct Place {
        std::string key;
    };
    /// Nothing where a file cannot be looked at.
    static std::optional<Place> placeOf(const TakeSound& sound, std::size_t totalBins);

    /// Whether something is kept there, be it damaged.
    bool contains(const Place& place) const;
    std::optional<WaveformResult> find(const Place& place) const;
    /// Only if the files are still as they were.
    void store(const Place& place, const TakeSound& sound, std::size_t totalBins,
               const WaveformResult& waveform);

  private:
    std::string path(const Place& place) const;
    void makeRoom(std::uint64_t added);

    const std::string folder_;
    const std::uint64_t mostBytes_;
    std::mutex mutex_;
    std::optional<std::uint64_t> bytes_; ///< in the folder, as far as this process knows
};

} // namespace orvane
