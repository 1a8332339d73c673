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

/// What is heard under a clip: the recording or a rendered mix in its place, where it begins and how loud it
/// is. What is wanted holds at once; the player has it once it is given here. Interface thread.
class PlayedSound {
  public:
    const SoundState& state() const { return state_; }
    /// That the player has; absent: the video's own sound.
    const std::optional<TakeSound>& applied() const { return applied_; }
    /// For a player; null: the video's own sound.
    std::function<std::unique_ptr<platform::AudioFile>()> opener() const;

    /// The sound that the player loads with its clip.
    void begin(std::optional<TakeSound> audio, double offsetSeconds);
    void clear();
    void setAudio(std::optional<TakeSound> audio) { audio_ = std::move(audio); }
    void setMixdown(std::optional<FileURL> mixdown) { mixdown_ = std::move(mixdown); }
    /// Gives the player and the blips (null: none) what is wanted; false where they have it.
    bool give(platform::Player& player, FrameBlips* blips);

    /// `player`: null where no clip is loaded.
    void setVolume(float volume, platform::Player* player);
    /// Finite.
    void setOffset(double seconds) { state_.syncOffsetSeconds = seconds; }
    /// Whether the player has another offset, by more than a tenth of a millisecond.
    bool isOffsetNew() const;
    void giveOffset(platform::Player& player);
    /// Whether it is muted or heard again.
    bool render(const AudioRenderPlan& plan, platform::Player& player);
    void endDucking() { state_.isDucking = false; }

  private:
    SoundState state_;
    double appliedOffset_ = 0; ///< seconds
    std::optional<TakeSound> audio_, applied_;
    std::optional<FileURL> mixdown_;
};

} // namespace orvane
