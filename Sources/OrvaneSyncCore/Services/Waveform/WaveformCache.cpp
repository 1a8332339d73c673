#include "OrvaneSyncCore/Services/Waveform/WaveformCache.h"

#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "OrvaneSyncCore/Services/Takes/SoundKey.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformFile.h"
#include "OrvaneSyncCore/Utilities/PackedBytes.h"

#include <utility>

namespace orvane {

WaveformCache::WaveformCache(std::string folder, std::uint64_t mostBytes)
    : files_(std::move(folder), ".waveform", mostBytes) {}

std::shared_ptr<WaveformCache> WaveformCache::shared() {
    return std::make_shared<WaveformCache>(AppStorageHelper::waveformCacheDirectory());
}

std::optional<WaveformCache::Place> WaveformCache::placeOf(const TakeSound& sound, std::size_t totalBins) {
    Place place;
    appendPlain(place.key, static_cast<std::uint64_t>(totalBins));
    return appendSound(place.key, sound) ? std::optional(std::move(place)) : std::nullopt;
}

std::optional<WaveformResult> WaveformCache::find(const Place& place) const {
    const auto bytes = files_.read(place.key);
    return bytes ? waveformFromBytes(*bytes, place.key) : std::nullopt;
}

void WaveformCache::store(const Place& place, const TakeSound& sound, std::size_t totalBins,
                          const WaveformResult& waveform) {
    const auto after = placeOf(sound, totalBins);
    if (after && after->key == place.key) files_.write(place.key, waveformBytes(place.key, waveform));
}

} // namespace orvane
