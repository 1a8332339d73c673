#include "OrvaneSyncCore/Services/Waveform/WaveformCache.h"

#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "OrvaneSyncCore/Utilities/PackedBytes.h"
#include "OrvaneSyncCore/Utilities/QuickHash.h"
#include "Platform/Files.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane {

namespace files = platform::files;

namespace {

constexpr std::string_view name = "ORVWAVE1"; ///< the last digit is that of the layout
constexpr std::string_view suffix = ".waveform";

void append(std::string& out, const std::vector<float>& values) {
    out.append(reinterpret_cast<const char*>(values.data()), values.size() * sizeof(float));
}

std::vector<float> takeValues(PackedReader& in, std::size_t count) {
    if (count > in.left() / sizeof(float)) {
        in.fail();
        return {};
    }
    std::vector<float> values(count);
    const std::string_view bytes = in.bytes(count * sizeof(float));
    std::memcpy(values.data(), bytes.data(), bytes.size());
    return values;
}

/// `name`, the hash of all that follows, the key, the numbers, and the values list by list.
std::string encoded(const std::string& key, const WaveformResult& waveform) {
    std::string body;
    appendText(body, key);
    appendPlain(body, waveform.binsPerSecond);
    appendPlain(body, waveform.durationSeconds);
    appendPlain(body, static_cast<std::uint32_t>(waveform.peaks.size()));
    appendPlain(body, static_cast<std::uint32_t>(waveform.peaksPerChannel.size()));
    append(body, waveform.peaks);
    append(body, waveform.rms);
    for (const auto& channel : waveform.peaksPerChannel) append(body, channel);
    for (const auto& channel : waveform.rmsPerChannel) append(body, channel);
    std::string out(name);
    appendPlain(out, quickHash(body));
    return out + body;
}

std::optional<WaveformResult> decoded(std::string_view bytes, const std::string& key) {
    PackedReader in(bytes);
    if (in.bytes(name.size()) != name) return std::nullopt;
    const auto hash = in.plain<std::uint64_t>();
    if (in.hasFailed() || quickHash(bytes.substr(bytes.size() - in.left())) != hash || in.text() != key)
        return std::nullopt;
    WaveformResult waveform;
    waveform.binsPerSecond = in.plain<double>();
    waveform.durationSeconds = in.plain<double>();
    const auto bins = in.plain<std::uint32_t>(), channels = in.plain<std::uint32_t>();
    if (channels > WaveformResult::mostChannels) return std::nullopt;
    waveform.peaks = takeValues(in, bins);
    waveform.rms = takeValues(in, bins);
    for (auto* lists : {&waveform.peaksPerChannel, &waveform.rmsPerChannel})
        for (std::uint32_t i = 0; i < channels; ++i) lists->push_back(takeValues(in, bins));
    return in.hasFailed() || in.left() > 0 ? std::nullopt : std::optional(std::move(waveform));
}

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
        return decoded(files::readText(path(place)), place.key);
    } catch (const platform::FileError&) {
        return std::nullopt;
    }
}

void WaveformCache::store(const Place& place, const TakeSound& sound, std::size_t totalBins,
                          const WaveformResult& waveform) {
    const auto after = placeOf(sound, totalBins);
    if (!after || after->key != place.key) return;
    const std::string bytes = encoded(place.key, waveform);
    const std::lock_guard lock(mutex_);
    try {
        files::createDirectories(folder_);
        files::writeAtomically(path(place), bytes);
        makeRoom(bytes.size());
    } catch (const platform::FileError&) { // a full disk keeps nothing
    }
}

/// Down to three quarters, so that the folder is not listed at every file.
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
