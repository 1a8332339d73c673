#pragma once

#include "OrvaneSyncApp/Controllers/EnginePlayers.h"
#include "OrvaneSyncApp/Controllers/PlayedSound.h"
#include "OrvaneSyncApp/Controllers/PlayerSeeks.h"
#include "OrvaneSyncApp/Controllers/VideoEngineStatus.h"
#include "OrvaneSyncCore/Models/FileURL.h"
#include "Platform/Task.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace orvane {

/// Plays a video with the recording under it: play, shuttle, frame steps, slow motion, loops. It knows
/// nothing of clips. Interface thread; held by a shared pointer, because the player's reports hold a weak
/// one. Operations without a loaded clip do nothing.
class VideoEngine : public VideoEngineStatus, public std::enable_shared_from_this<VideoEngine> {
  public:
    using Dependencies = VideoEngineDependencies;
    static std::shared_ptr<VideoEngine> create(Dependencies dependencies);
    ~VideoEngine();

    const SoundState& sound() const { return sound_.state(); } ///< observable
    /// That of the recording; null if no view shows it.
    const std::shared_ptr<WaveformState>& waveform() const { return dependencies_.waveform; }
    double rate() const { return transport_.isLoaded && transport_.isPlaying ? player_->rate() : 0; }
    /// For a screen that shows its pictures; null unless a clip is loaded.
    platform::Player* player() const { return transport_.isLoaded ? player_.get() : nullptr; }
    EnginePlayers& output() { return output_; }
    const EnginePlayers& output() const { return output_; }
    /// For a loaded clip: the target of a seek that is not finished, otherwise the player's position.
    platform::MediaTime position() const;

    /// `audio`: the recording under the picture; absent: the video's own sound. The task ends when the clip
    /// is at the requested second (0 if absent) and its picture is shown, or the clip cannot be played, or
    /// another one was loaded.
    platform::Task loadClip(FileURL video, std::optional<TakeSound> audio, double syncOffsetSeconds,
                            std::optional<double> initialSeekSeconds, KnownPicture picture = {});
    /// Unloads everything.
    void cleanup();

    void play();
    /// The same from `time` on, limited to the clip, starting at a given time of the players' clock.
    void play(platform::MediaTime time, std::chrono::nanoseconds hostTime);
    void pause(bool silenceAudio);
    void playPause();
    /// Playing continues at the same speed. A time before the clip is moved to its start.
    void seek(platform::MediaTime time);
    void seek(double toSeconds) { seek(platform::MediaTime::fromSeconds(toSeconds)); }
    /// A move by the user: stops what plays, without sound.
    void moveTo(double seconds);
    /// With `playBlip` the frame that is reached is played, if there is sound.
    void stepFrames(std::int64_t count, bool playBlip);
    void pressJ() { shuttle(speed().after(false)); }
    void pressL() { shuttle(speed().after(true)); }
    void shuttle(ShuttleSpeed speed);
    void slowMotionScrub(bool forward);
    /// Plays this number of frames before and after the position repeatedly.
    void setLoopRegion(double aroundSeconds, int frames);
    /// Playing continues.
    void clearLoop();
    /// Returns whether it moved the playhead; it does not if the user has.
    bool correctInitialSeek(double toSeconds);
    /// Stops what plays and shows the picture there. `endSkim` moves the playhead back, unless the user has
    /// moved or started the transport meanwhile.
    void skim(double toSeconds);
    void endSkim();
    void noteUserMoved();

    void setVolume(float volume);
    /// Takes effect while the sound plays, which neither stops nor jumps. A change below a tenth of a
    /// millisecond is ignored.
    void setSyncOffsetSeconds(double seconds);
    /// Sets other recordings for the same picture.
    void setAudio(std::optional<TakeSound> audio);
    /// A rendered mix that is played instead of the recording; absent: none.
    void setMixdownAudio(std::optional<FileURL> url);

    /// Ends when the picture of the newest seek is shown.
    platform::Task shown() { return seeks_->shown(); }

    static constexpr double slowMotionRate = 0.25;
    /// How long a single frame is played through the player.
    static constexpr std::chrono::milliseconds legacyBlipHold{220};

  private:
    struct HostStart;

    explicit VideoEngine(Dependencies dependencies);
    void assertOnMainThread() const;
    void observePlayer();
    void opened(const platform::PlayerFacts& facts, std::optional<double> initialSeekSeconds);
    void unload();
    void timeReported(platform::MediaTime time);
    void endReported();
    void start(const std::optional<HostStart>& at);
    platform::MediaTime within(platform::MediaTime time) const; ///< limited to the clip
    void run(double rate, const AudioRenderPlan& plan);
    void wrapIfAtEnd(bool isForward);
    void goBackFromEnd();
    void apply(const AudioRenderPlan& plan);
    /// Does not limit the time to the clip.
    void seekPlayer(platform::MediaTime time, std::function<void()> shown = nullptr);
    void playFrameBlip(platform::MediaTime at);
    bool hasBlips() const;  ///< of the recording that is heard
    bool isAudible() const; ///< there is a sound, and the user has not muted it
    void playBlipOnPlayer();
    void endBlip();
    void giveSound();

    const Dependencies dependencies_;
    EnginePlayers output_;
    std::unique_ptr<platform::Player> player_;
    std::vector<platform::Subscription> observers_; ///< of the player
    PlayedSound sound_;
    bool hasLoopRun_ = false; ///< a time after the loop's start was reported since the loop last began
    std::optional<FileURL> video_;
    const std::shared_ptr<PlayerSeeks> seeks_;
    std::shared_ptr<platform::Timer> blipTimer_;       ///< while a single frame is played through the player
    std::optional<platform::MediaTime> blipReturnsTo_; ///< likewise
};

} // namespace orvane
