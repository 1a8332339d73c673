#pragma once

#include "OrvaneSyncApp/Controllers/AudioLevelProvider.h"
#include "OrvaneSyncApp/Controllers/ShuttleSpeed.h"
#include "OrvaneSyncApp/Controllers/VideoEngineState.h"
#include "OrvaneSyncCore/Models/FileURL.h"
#include "OrvaneSyncCore/Services/Playback/FrameBlips.h"
#include "OrvaneSyncCore/Services/Playback/ShuttleAudioEngine.h"
#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformState.h"
#include "Platform/Completion.h"
#include "Platform/Listeners.h"
#include "Platform/Playback/Player.h"
#include "Platform/Task.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// What of an engine has changed.
enum class VideoEngineField : std::uint8_t { playhead, transport, loop, sound, picture };

/// What the file says of a picture that cannot be decoded here; 0: not known.
struct KnownPicture {
    double durationSeconds = 0, frameRate = 0;
};

/// Plays a video with the recording that lies under it: play, shuttle, frame steps, slow motion, loops. It
/// knows nothing of clips. Interface thread; held by a shared pointer, as reports of the player hold it
/// weakly. Operations without a loaded clip do nothing.
class VideoEngine : public std::enable_shared_from_this<VideoEngine> {
  public:
    struct Dependencies {
        std::shared_ptr<platform::MainThread> mainThread;
        /// Asked when the first clip is loaded; null: nothing can be played.
        std::function<std::shared_ptr<platform::PlayerSystem>()> openPlayers;
        /// Asked with the players; null: frames are heard through the player.
        std::function<std::unique_ptr<FrameBlips>(const std::shared_ptr<platform::PlayerSystem>&)> makeBlips =
            nullptr;
        std::shared_ptr<WaveformState> waveform = nullptr;
    };
    static std::shared_ptr<VideoEngine> create(Dependencies dependencies);
    ~VideoEngine();

    // The state. Each getter of this part is observable.

    const PlayheadState& playhead() const { return playhead_; }
    const TransportState& transport() const { return transport_; }
    const LoopState& loop() const { return loop_; }
    float volume() const { return volume_; } ///< the user's, 0 to 1
    /// Start of the sound on the clip's axis; positive: it starts later than the picture.
    double syncOffsetSeconds() const { return syncOffsetSeconds_; }
    /// Calls back after every change.
    platform::Subscription onChange(std::function<void(VideoEngineField)> callback) {
        return changed_.add(std::move(callback));
    }

    /// Of the recording; null where nobody wants to see it.
    const std::shared_ptr<WaveformState>& waveform() const { return dependencies_.waveform; }
    /// The pointer skims the clip; the player's time reports do not move the playhead.
    bool isSkimming() const { return savedPlayheadBeforeSkim_.has_value(); }
    /// Since the clip was loaded, the user has moved or started the transport.
    bool userHasMovedPlayhead() const { return userHasMovedPlayhead_; }
    bool isSlowMotionScrubbing() const { return isSlowMotionScrubbing_; }
    bool isDucking() const { return isDucking_; } ///< muted as nothing would be heard at this speed
    double rate() const { return transport_.isLoaded && transport_.isPlaying ? player_->rate() : 0; }
    /// For what a screen shows of it; null unless a clip is loaded.
    platform::Player* player() const { return transport_.isLoaded ? player_.get() : nullptr; }
    const std::shared_ptr<platform::PlayerSystem>& players();
    /// From here on the levels of what is loaded are measured, by the clock of the players.
    void measureLevels() { isMeasuringLevels_ = true; }
    /// Of the meters; empty where nothing is measured.
    const AudioLevels& levels() const { return meters_ ? meters_->levels() : AudioLevels::empty; }
    /// Of a loaded clip: where a seek leads, or else where the player stands.
    platform::MediaTime position() const;

    /// `audio`: what lies under the picture; absent: the video's own sound. The task ends when the clip
    /// stands at the asked second (0 if absent) and its picture is there, or cannot be played, or another was
    /// loaded.
    platform::Task loadClip(FileURL video, std::optional<TakeSound> audio, double syncOffsetSeconds,
                            std::optional<double> initialSeekSeconds, KnownPicture picture = {});
    /// Unloads everything.
    void cleanup();
    void setStartTimecode(double seconds, std::optional<TimecodeFrameRate> rate);
    /// As a file states it, once it is loaded; without a rate of its own at that of the pictures. Nothing
    /// changes without a timecode.
    void setStartTimecode(const std::optional<std::string>& stated, std::optional<TimecodeFrameRate> rate);

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
    void pressJ() { shuttle(speed_.after(false)); }
    void pressL() { shuttle(speed_.after(true)); }
    void shuttle(ShuttleSpeed speed);
    ShuttleSpeed speed() const { return speed_; } ///< of the keys J and L
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
    platform::Task shown();

    static constexpr double slowMotionRate = 0.25;
    /// How long a frame is heard through the player.
    static constexpr std::chrono::milliseconds legacyBlipHold{220};

  private:
    struct HostStart {
        platform::MediaTime time;
        std::chrono::nanoseconds hostTime;
    };

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
    void apply(const AudioRenderPlan& plan);
    /// Without the clip's beginning and end being looked at.
    void seekPlayer(platform::MediaTime time, std::function<void()> shown = nullptr);
    void forgetSeek();
    void playFrameBlip(platform::MediaTime at);
    bool isAudible() const; ///< there is a sound, and the user has not muted it
    void playBlipOnPlayer();
    void endBlip();
    std::optional<TakeSound> audioSource() const;
    void soundChanged();
    void setSpeed(ShuttleSpeed speed);
    void setLabel(std::string label);
    void setPlayhead(platform::MediaTime time);
    void setPlaying(bool isPlaying);
    void notify(VideoEngineField field) { changed_.notify(field); }

    const Dependencies dependencies_;
    std::shared_ptr<platform::PlayerSystem> players_;
    std::unique_ptr<platform::Player> player_;
    std::vector<platform::Subscription> observers_; ///< of the player
    std::unique_ptr<FrameBlips> blips_;
    bool isMeasuringLevels_ = false;
    std::shared_ptr<AudioLevelProvider> meters_;
    platform::Listeners<VideoEngineField> changed_;

    PlayheadState playhead_;
    TransportState transport_;
    LoopState loop_;
    bool hasLoopRun_ = false; ///< a time behind the loop's start was reported since it last began
    float volume_ = 1;
    double syncOffsetSeconds_ = 0;
    double appliedOffset_ = 0; ///< that the player has
    std::optional<FileURL> video_;
    std::optional<TakeSound> audio_;
    std::optional<FileURL> mixdown_;
    std::optional<TakeSound> appliedSound_; ///< that the player has
    ShuttleSpeed speed_;
    bool isSlowMotionScrubbing_ = false;
    std::optional<platform::MediaTime> savedPlayheadBeforeSkim_; ///< while the pointer skims
    bool userHasMovedPlayhead_ = false;
    bool isDucking_ = false;
    std::optional<platform::MediaTime> seekingTo_; ///< until its picture is shown
    std::uint64_t seeks_ = 0;                      ///< the number of the newest
    std::vector<std::shared_ptr<platform::Completion>> whenShown_;
    std::shared_ptr<platform::Timer> blipTimer_;       ///< while a frame is heard through the player
    std::optional<platform::MediaTime> blipReturnsTo_; ///< likewise
};

} // namespace orvane
