#pragma once

#include "OrvaneSyncApp/Controllers/VideoEngineState.h"
#include "OrvaneSyncCore/Services/Playback/FrameBlips.h"
#include "OrvaneSyncCore/Services/Playback/ShuttleAudioEngine.h"
#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"
#include "Platform/Playback/Player.h"

#include <functional>
#include <memory>
#include <optional>

namespace orvane {

/// The sound under a clip: the recording or a rendered mix in its place, its start and its volume. A
/// requested state is stored at once; the player gets it when it is passed to these functions. Interface
/// thread.
class PlayedSound {
  public:
    const SoundState& state() const { return state_; }
    /// The sound that the player has; absent: the video's own sound.
    const std::optional<TakeSound>& applied() const { return applied_; }
    /// Opens the sound for a player; null: the video's own sound.
    std::function<std::unique_ptr<platform::AudioFile>()> opener() const;

    /// Sets the sound that the player loads with its clip.
    void begin(std::optional<TakeSound> audio, double offsetSeconds);
    void clear();
    void setAudio(std::optional<TakeSound> audio) { audio_ = std::move(audio); }
    void setMixdown(std::optional<FileURL> mixdown) { mixdown_ = std::move(mixdown); }
    /// Passes the requested sound to the player and the blips (null: none); false if they have it.
    bool give(platform::Player& player, FrameBlips* blips);

    /// `player`: null if no clip is loaded.
    void setVolume(float volume, platform::Player* player);
    /// Must be finite.
    void setOffset(double seconds) { state_.syncOffsetSeconds = seconds; }
    /// Whether the requested offset differs from the player's by more than a tenth of a millisecond.
    bool isOffsetNew() const;
    void giveOffset(platform::Player& player);
    /// Returns whether the sound was muted or unmuted.
    bool render(const AudioRenderPlan& plan, platform::Player& player);
    void endDucking() { state_.isDucking = false; }

  private:
    SoundState state_;
    double appliedOffset_ = 0; ///< seconds
    std::optional<TakeSound> audio_, applied_;
    std::optional<FileURL> mixdown_;
};

} // namespace orvane
