#pragma once

#include "OrvaneSyncApp/Controllers/AudioLevelProvider.h"
#include "OrvaneSyncCore/Services/Playback/FrameBlips.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformState.h"

#include <functional>
#include <memory>

namespace orvane {

struct VideoEngineDependencies {
    std::shared_ptr<platform::MainThread> mainThread;
    /// Called when the first clip is loaded; null: nothing can be played.
    std::function<std::shared_ptr<platform::PlayerSystem>()> openPlayers;
    /// Called with the players; null: single frames are heard through the player.
    std::function<std::unique_ptr<FrameBlips>(const std::shared_ptr<platform::PlayerSystem>&)> makeBlips =
        nullptr;
    std::shared_ptr<WaveformState> waveform = nullptr;
};

/// The players of a video engine, opened at the first request. Interface thread.
class EnginePlayers {
  public:
    /// `dependencies` outlives this object.
    explicit EnginePlayers(const VideoEngineDependencies& dependencies) : dependencies_(dependencies) {}

    /// Null: nothing can be played.
    const std::shared_ptr<platform::PlayerSystem>& system();
    FrameBlips* blips() const { return blips_.get(); } ///< null: single frames are heard through the player

    /// After this call, the levels of the loaded clip are measured, by the clock of the players.
    void measureLevels() { isMeasuringLevels_ = true; }
    /// Empty if levels are not measured.
    const AudioLevels& levels() const { return meters_ ? meters_->levels() : AudioLevels::empty; }
    /// `player` outlives this object or the call of `unload`.
    void loaded(const platform::Player& player);
    void unload();

  private:
    const VideoEngineDependencies& dependencies_;
    std::shared_ptr<platform::PlayerSystem> players_;
    std::unique_ptr<FrameBlips> blips_;
    bool isMeasuringLevels_ = false;
    std::shared_ptr<AudioLevelProvider> meters_;
};

} // namespace orvane
