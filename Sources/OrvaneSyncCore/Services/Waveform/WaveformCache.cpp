#include "OrvaneSyncCore/Services/Waveform/WaveformCache.h"

#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformFile.h"
#include "OrvaneSyncCore/Utilities/PackedBytes.h"
#include "OrvaneSyncCore/Utilities/QuickHash.h"
#include "Platform/Files.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane {

namespace files = platform::files;

namespace {

constexpr std::string_view suffix = ".waveform";

} // namespace

WaveformCache::WaveformCache(std::string folder, std::uint64_t mostBytes)
    : folder_(std::move(folder)), mostBytes_(mostBytes) {}

std::shared_ptr<WaveformCache> WaveformCache::shared() {
    return std::make_shared<WaveformCache>(AppStorageHelper::waveformCacheDirectory());
}

std::optional<WaveformCache::Place> WaveformCache::placeOf(const TakeSound& sound, std::size_t totalBins) {
    Place place;
    appendPlain(place.key, static_cast<std::uint64_t>(totalBins));
    for (const TakeSound::File& file : sound.files) {
        const auto attributes = files::attributes(file.url.path);
        if (!attributes) return std::nullopt;
        appendText(place.key, file.url.path);
        appendPlain(place.key, attributes->size);
        appendPlain(place.key, attributes->modificationSinceReference);
        appendPlain(place.key, file.firstChannel);
        appendPlain(place.key, file.channelCount);
        appendPlain(place.key, file.startSeconds);
        appendPlain(place.key, file.durationSeconds);
    }
    return place;
}

std::string WaveformCache::path(const Place& place) const {
    std::array<char, 2 * sizeof(std::uint64_t) + 1> digits{};
    std::snprintf(digits.data(), digits.size(), "%016llx",
                  static_cast<unsigned long long>(quickHash(place.key)));
    return folder_ + "/" + digits.data() + std::string(suffix);
}

bool WaveformCache::contains(const Place& place) const { return files::exists(path(place)); }

std::optional<WaveformResult> WaveformCache::find(const Place& place) const {
    if (!contains(place)) return std::nullopt;
    try {
        return waveformFromBytes(files::readText(path(place)), place.key);
    } catch (const platform::FileError&) {
        return std::nullopt;
    }
}

void WaveformCache::store(const Place& place, const TakeSound& sound, std::size_t totalBins,
                          const WaveformResult& waveform) {
    const auto after = placeOf(sound, totalBins);
    if (!after || after->key != place.key) return;
    const std::string bytes = waveformBytes(place.key, waveform);
    const std::lock_guard lock(mutex_);
    try {
        files::createDirectories(folder_);
        files::writeAtomically(path(place), bytes);
        makeRoom(bytes.size());
    } catch (const platform::FileError&) { // if the disk is full, nothing is cached
    }
}

/// Removes files down to three quarters of the limit, so that the folder is not listed for every file.
void WaveformCache::makeRoom(std::uint64_t added) {
    if (bytes_ && *bytes_ + added <= mostBytes_) {
        *bytes_ += added;
        return;
    }
    struct File {
        double written = 0;
        std::uint64_t size = 0;
        std::string path;
    };
    std::vector<File> kept;
    std::uint64_t total = 0;
    for (const std::string& child : files::childNames(folder_).value_or(std::vector<std::string>())) {
        const std::string file = folder_ + "/" + child;
        const auto attributes = child.ends_with(suffix) ? files::attributes(file) : std::nullopt;
        if (!attributes) continue;
        kept.push_back(
            {attributes->modificationSinceReference, static_cast<std::uint64_t>(attributes->size), file});
        total += kept.back().size;
    }
    if (total > mostBytes_) {
        std::ranges::sort(kept, {}, &File::written);
        for (const File& file : kept) {
            if (total <= mostBytes_ / 4 * 3) break;
            files::remove(file.path);
            total -= file.size;
        }
    }
    bytes_ = total;
}

} // namespace orvane
