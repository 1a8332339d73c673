#pragma once

#include "OrvaneSyncCore/Services/Waveform/WaveformState.h"
#include "Platform/MainThread.h"

#include <QImage>
#include <QRgb>

#include <compare>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <stop_token>
#include <vector>

namespace orvane::views {

/// Identifies the contents of a tile. Equal keys mean equal pictures.
struct WaveformTileKey {
    int channel = 0;             ///< from 1; 0: all channels
    double columnsPerSecond = 0; ///< pixels of the screen
    std::int64_t index = 0;      ///< from the recording's first sample on, `WaveformTile::width` columns each
    int height = 0;              ///< pixels of the screen
    QRgb ground = 0, peakColour = 0, levelColour = 0;

    auto operator<=>(const WaveformTileKey&) const = default;
};

/// The tiles of one waveform, drawn on a thread of its own and kept until another waveform is set. Interface
/// thread.
class WaveformTiles {
  public:
    /// `drawn` is called when requested tiles are ready.
    WaveformTiles(std::shared_ptr<platform::MainThread> mainThread, std::function<void()> drawn);
    ~WaveformTiles();

    /// Removes the tiles of another waveform.
    void setWaveform(const std::shared_ptr<const Waveform>& waveform);
    const Waveform* waveform() const { return waveform_.get(); }
    /// The factor with which the recording's highest peak fills the height.
    float gain() const { return gain_; }
    /// Null while it is not drawn.
    const QImage* find(const WaveformTileKey& key);
    /// Requests visible tiles that are not drawn. Earlier requests that are not among them are dropped.
    void want(const std::set<WaveformTileKey>& missing);
    bool isDrawing() const { return !wanted_.empty(); }

  private:
    struct Kept {
        QImage image;
        std::uint64_t usedAt = 0;
    };
    void take(std::uint64_t batch, std::vector<std::pair<WaveformTileKey, QImage>> tiles);
    void makeRoom();

    const std::shared_ptr<platform::MainThread> mainThread_;
    const std::function<void()> drawn_;
    std::shared_ptr<const Waveform> waveform_;
    float gain_ = 1;
    std::map<WaveformTileKey, Kept> tiles_;
    std::uint64_t uses_ = 0;
    std::set<WaveformTileKey> wanted_; ///< being drawn
    std::uint64_t batch_ = 0;
    std::stop_source stop_;
    const std::shared_ptr<WaveformTiles*> self_; ///< null once this object is destroyed
    const std::unique_ptr<platform::SerialQueue> queue_;
};

} // namespace orvane::views
