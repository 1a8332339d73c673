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

/// What a tile shows. Equal keys are the same picture.
struct WaveformTileKey {
    int channel = 0;             ///< from 1; 0: all channels
    double columnsPerSecond = 0; ///< pixels of the screen
    std::int64_t index = 0;      ///< from the recording's first sample on, `WaveformTile::width` columns each
    int height = 0;              ///< pixels of the screen
    QRgb ground = 0, peakColour = 0, levelColour = 0;

    auto operator<=>(const WaveformTileKey&) const = default;
};

/// The tiles of one waveform, drawn on a thread of their own and kept until the waveform is another.
/// Interface thread.
class WaveformTiles {
  public:
    /// `drawn` is called when tiles are there that were wanted.
    WaveformTiles(std::shared_ptr<platform::MainThread> mainThread, std::function<void()> drawn);
    ~WaveformTiles();

    /// Forgets the tiles of another one.
    void setWaveform(const std::shared_ptr<const Waveform>& waveform);
    const Waveform* waveform() const { return waveform_.get(); }
    /// What makes the recording's highest peak fill the height.
    float gain() const { return gain_; }
    /// Null as long as it is not drawn.
    const QImage* find(const WaveformTileKey& key);
    /// What is visible and not there. What was wanted before and is not any more is not drawn.
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
    std::set<WaveformTileKey> wanted_; ///< under way
    std::uint64_t batch_ = 0;
    std::stop_source stop_;
    const std::shared_ptr<WaveformTiles*> self_; ///< for what comes from the other thread
    const std::unique_ptr<platform::SerialQueue> queue_;
};

} // namespace orvane::views
