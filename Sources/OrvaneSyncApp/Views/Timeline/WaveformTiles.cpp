#include "OrvaneSyncApp/Views/Timeline/WaveformTiles.h"

#include "OrvaneSyncApp/ViewModels/Timeline/WaveformTile.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformImage.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace orvane::views {

namespace {

constexpr std::size_t mostTiles = 3000;    ///< 100 kB each at double scale, and most are a tenth of that
constexpr std::size_t tilesOfAReport = 12; ///< few, so that the first tiles appear early

QImage imageOf(const Waveform& waveform, float gain, const WaveformTileKey& key) {
    const bool isOne =
        key.channel > 0 && static_cast<std::size_t>(key.channel) <= waveform.peaksPerChannel.size();
    const auto at = static_cast<std::size_t>(std::max(key.channel - 1, 0));
    WaveformTile tile;
    tile.peaks = isOne ? waveform.peaksPerChannel[at] : waveform.peaks;
    tile.rms = isOne ? waveform.rmsPerChannel[at] : waveform.rms;
    tile.binsPerColumn = waveform.binsPerSecond / key.columnsPerSecond;
    tile.firstColumn = key.index * WaveformTile::width;
    tile.height = key.height;
    tile.gain = gain;
    const std::vector<std::uint32_t> pixels = drawn(tile, key.ground, key.peakColour, key.levelColour);
    QImage image(WaveformTile::width, key.height, QImage::Format_RGB32);
    for (int row = 0; row < key.height; ++row)
        std::memcpy(image.scanLine(row), &pixels[static_cast<std::size_t>(row) * WaveformTile::width],
                    WaveformTile::width * sizeof(std::uint32_t));
    return image;
}

} // namespace

WaveformTiles::WaveformTiles(std::shared_ptr<platform::MainThread> mainThread, std::function<void()> drawn)
    : mainThread_(std::move(mainThread)), drawn_(std::move(drawn)),
      self_(std::make_shared<WaveformTiles*>(this)), queue_(platform::SerialQueue::create("waveform tiles")) {
}

WaveformTiles::~WaveformTiles() {
    *self_ = nullptr;
    stop_.request_stop();
}

void WaveformTiles::setWaveform(const std::shared_ptr<const Waveform>& waveform) {
    if (waveform_ == waveform) return;
    waveform_ = waveform;
    gain_ = waveform ? displayGain(*waveform) : 1;
    tiles_.clear();
    want({});
}

const QImage* WaveformTiles::find(const WaveformTileKey& key) {
    const auto found = tiles_.find(key);
    if (found == tiles_.end()) return nullptr;
    found->second.usedAt = ++uses_;
    return &found->second.image;
}

void WaveformTiles::want(const std::set<WaveformTileKey>& missing) {
    if (!missing.empty() && std::ranges::includes(wanted_, missing)) return;
    stop_.request_stop();
    stop_ = {};
    wanted_ = missing;
    const std::uint64_t batch = ++batch_;
    if (missing.empty() || !waveform_ || waveform_->binsPerSecond <= 0) return wanted_.clear();
    const std::stop_token token = stop_.get_token();
    queue_->post(
        [todo = std::vector(missing.begin(), missing.end()), waveform = waveform_, gain = gain_, batch, token,
         self = self_, mainThread = std::weak_ptr(mainThread_)] {
            std::vector<std::pair<WaveformTileKey, QImage>> tiles;
            for (std::size_t i = 0; i < todo.size() && !token.stop_requested(); ++i) {
                tiles.emplace_back(todo[i], imageOf(*waveform, gain, todo[i]));
                if (tiles.size() < tilesOfAReport && i + 1 < todo.size()) continue;
                const auto thread = mainThread.lock();
                if (!thread) return;
                thread->post([self, batch, report = std::exchange(tiles, {})]() mutable {
                    if (*self != nullptr) (*self)->take(batch, std::move(report));
                });
            }
        },
        token);
}

void WaveformTiles::take(std::uint64_t batch, std::vector<std::pair<WaveformTileKey, QImage>> tiles) {
    if (batch != batch_) return; // of another waveform, or of tiles that are out of view
    for (auto& [key, image] : tiles) {
        wanted_.erase(key);
        tiles_.insert_or_assign(key, Kept{std::move(image), ++uses_});
    }
    makeRoom();
    drawn_();
}

void WaveformTiles::makeRoom() {
    if (tiles_.size() <= mostTiles) return;
    std::vector<std::uint64_t> uses;
    for (const auto& [key, tile] : tiles_) uses.push_back(tile.usedAt);
    const auto middle = uses.begin() + static_cast<std::ptrdiff_t>(uses.size() / 2);
    std::ranges::nth_element(uses, middle);
    std::erase_if(tiles_, [&](const auto& one) { return one.second.usedAt < *middle; });
}

} // namespace orvane::views
