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

/// Plays a video with the recording that lies under it: play, shuttle, frame steps, slow motion, loops. It
/// knows nothing of clips. Interface thread; held by a shared pointer, as reports of the player hold it
/// weakly. Operations without a loaded clip do nothing.
class VideoEngine : public VideoEngineStatus, public std::enable_shared_from_this<VideoEngine> {
  public:
    using Dependencies = VideoEngineDependencies;
    static std::shared_ptr<VideoEngine> create(Dependencies dependencies);
    ~VideoEngine();

    const SoundState& sound() const { return sound_.state(); } ///< observable
    /// Of the recording; null where no view shows it.
    const std::shared_ptr<WaveformState>& waveform() const { return dependencies_.waveform; }
    double rate() const { return transport_.isLoaded && transport_.isPlaying ? player_->rate() : 0; }
    /// For what a screen shows of it; null unless a clip is loaded.
    platform::Player* player() const { return transport_.isLoaded ? player_.get() : nullptr; }
    EnginePlayers& output() { return output_; }
    const EnginePlayers& output() const { return output_; }
    /// Of a loaded clip: where a seek leads, or else where the player is.
    platform::MediaTime position() const;

    /// `audio`: what lies under the picture; absent: the video's own sound. The task ends when the clip
    /// is at the asked second (0 if absent) and its picture is there, or cannot be played, or another was
    /// loaded.
    platform::Task loadClip(FileURL video, std::optional<TakeSound> audio, double syncOffsetSeconds,
                            std::optional<double> initialSeekSeconds, KnownPicture picture = {});
    /// Unloads everything.
    void cleanup();

    void play();
    /// The same from `time` on, brought within the clip, at a moment of the players' clock.
    void play(platform::MediaTime time, std::chrono::nanoseconds hostTime);
    void pause(bool silenceAudio);
    void playPause();
    /// Goes on at the speed that runs. A moment before the clip is its start.
    void seek(platform::MediaTime time);
    void seek(double toSeconds) { seek(platform::MediaTime::fromSeconds(toSeconds)); }
    /// By hand: whatever plays stops and is not heard.
    void moveTo(double seconds);
    /// With `playBlip` the frame that is reached is heard, where there is sound.
    void stepFrames(std::int64_t count, bool playBlip);
    void pressJ() { shuttle(speed().after(false)); }
    void pressL() { shuttle(speed().after(true)); }
    void shuttle(ShuttleSpeed speed);
    void slowMotionScrub(bool forward);
    /// Plays so many frames either side again and again.
    void setLoopRegion(double aroundSeconds, int frames);
    /// Playing goes on.
    void clearLoop();
    /// Whether it moved the playhead; not once the user has.
    bool correctInitialSeek(double toSeconds);
    /// Stops what plays and shows the picture there. The playhead goes back with `endSkim`, unless the user
    /// has moved or started the transport from there.
    void skim(double toSeconds);
    void endSkim();
    void noteUserMoved();

    void setVolume(float volume);
    /// Takes effect under the sound that runs, which neither stops nor jumps. Below a tenth of a millisecond
    /// nothing happens.
    void setSyncOffsetSeconds(double seconds);
    /// Other recordings for the same picture.
    void setAudio(std::optional<TakeSound> audio);
    /// A rendered mix that is played in place of the recording; absent: none.
    void setMixdownAudio(std::optional<FileURL> url);

    /// Ends when the picture of the newest seek is shown.
    platform::Task shown() { return seeks_->shown(); }

    static constexpr double slowMotionRate = 0.25;
    /// How long a frame is heard through the player.
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
    platform::MediaTime within(platform::MediaTime time) const; ///< the clip
    void run(double rate, const AudioRenderPlan& plan);
    void wrapIfAtEnd(bool isForward);
    void goBackFromEnd();
    void apply(const AudioRenderPlan& plan);
    /// Without the clip's beginning and end being looked at.
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
    bool hasLoopRun_ = false; ///< a time behind the loop's start was reported since it last began
    std::optional<FileURL> video_;
    const std::shared_ptr<PlayerSeeks> seeks_;
    std::shared_ptr<platform::Timer> blipTimer_;       ///< while a frame is heard through the player
    std::optional<platform::MediaTime> blipReturnsTo_; ///< likewise
};

} // namespace orvane
