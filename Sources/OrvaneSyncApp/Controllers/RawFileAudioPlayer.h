#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformState.h"
#include "Platform/Listeners.h"
#include "Platform/Playback/Player.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>

namespace orvane {

/// Plays one file of the list of files at a time, with its waveform. Interface thread; held by a shared
/// pointer, because the player's reports hold a weak one.
class RawFileAudioPlayer : public std::enable_shared_from_this<RawFileAudioPlayer> {
  public:
    static constexpr std::size_t waveformBins = 800;

    static std::shared_ptr<RawFileAudioPlayer> create(std::shared_ptr<platform::PlayerSystem> players,
                                                      std::shared_ptr<WaveformState> waveform);

    /// Plays or pauses the loaded file; if it is another file, loads and plays it.
    void togglePlayback(const MediaAsset& asset);
    void stop();
    /// A fraction of the file's length, 0 to 1.
    void seek(double toFraction);

    /// Absent if no file is loaded.
    const std::optional<UUID>& currentAssetID() const { return currentAssetID_; }
    bool isPlaying() const { return isPlaying_; }
    double currentTime() const { return currentTime_; } ///< seconds
    double duration() const { return duration_; }       ///< seconds; 0 until the file is open
    const std::shared_ptr<WaveformState>& waveform() const { return waveform_; }
    /// Calls back whenever one of these values changes.
    platform::Subscription onChange(std::function<void()> callback) {
        return changed_.add(std::move(callback));
    }

  private:
    RawFileAudioPlayer(std::shared_ptr<platform::PlayerSystem> players,
                       std::shared_ptr<WaveformState> waveform);
    void makePlayer();
    void load(const MediaAsset& asset);
    void opened(const platform::PlayerFacts& facts);
    void setPlaying(bool isPlaying);

    const std::shared_ptr<platform::PlayerSystem> players_;
    const std::shared_ptr<WaveformState> waveform_;
    std::unique_ptr<platform::Player> player_;
    platform::Subscription times_, end_;
    std::optional<UUID> currentAssetID_;
    bool isPlaying_ = false;
    double currentTime_ = 0;
    double duration_ = 0;
    platform::Listeners<> changed_;
};

} // namespace orvane
