#pragma once

#include "Platform/AudioFile.h"
#include "Platform/MainThread.h"
#include "Platform/Playback/MediaTime.h"
#include "Platform/Playback/Picture.h"
#include "Platform/Subscription.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvane::platform {

class Mixer;

/// How sound keeps or changes its pitch at other rates than 1.
enum class PitchAlgorithm {
    spectral,   ///< kept; for music and speech at up to twice the speed
    timeDomain, ///< kept; the fastest
    varispeed,  ///< follows the rate, as tape does
};

/// A composition of a picture and a sound that begins `soundOffset` later than the picture (earlier if
/// negative: its beginning is not heard). It ends where the picture ends, or, without a picture, where the
/// sound ends.
struct PlayerItem {
    /// In the bytes of the file system; empty if there is sound alone.
    std::string videoPath{};
    /// Opens the sound that replaces the video's own; called on a thread of the player. Empty: the video's
    /// own sound, at offset 0 whatever `soundOffset` says.
    std::function<std::unique_ptr<AudioFile>()> openSound = nullptr;
    MediaTime soundOffset{};
    /// The file's stated duration of a picture that cannot be decoded here; 0: not known, so the item ends
    /// with the sound.
    MediaTime pictureDuration{};
    double pictureFrameRate = 0;
};

struct PlayerFacts {
    bool hasPicture = false;
    bool hasSound = false;
    MediaTime duration;
    double nominalFrameRate = 0; ///< pictures per second; 0 if unknown
    int soundChannelCount = 0;
    bool isVideoMissing = false; ///< there is no file at the video's path
};

/// Level of one channel of the sound that is heard, linear, full scale at 1.
struct ChannelPeak {
    float peak = 0;
    float rms = 0;
};

/// Plays a composition. Every operation belongs to the interface thread and returns at once; files are read
/// and decoded on threads of the player. An operation without an item does nothing.
class Player {
  public:
    virtual ~Player() = default;

    /// Replaces the item: stops, keeps the volume and the size of pictures, and moves to 0. Calls back on the
    /// interface thread when the item is open. A load that a newer one replaced never calls back.
    virtual void load(PlayerItem item, std::function<void(const PlayerFacts&)> loaded) = 0;
    virtual void unload() = 0;
    virtual bool isLoaded() const = 0;
    virtual const PlayerFacts& facts() const = 0;

    /// The time of the clip that is heard and shown; exact while the rate is 0.
    virtual MediaTime currentTime() const = 0;
    virtual double rate() const = 0; ///< signed, 0 while paused and after an end was reached
    /// From -32 to 32. From pause, a clip starts forward when its first pictures are decoded, for which it
    /// waits a moment. At the end of the clip, or at 0 in reverse, it stops and reports that once.
    virtual void setRate(double rate) = 0;
    /// Runs at `rate` so that `time` is heard at the time `hostTime` of the system's clock (Clock::now):
    /// equal times for several players are the same frame of the output.
    virtual void setRate(double rate, MediaTime time, std::chrono::nanoseconds hostTime) = 0;
    /// The current time, as the base of `setRate` with a host time.
    virtual std::chrono::nanoseconds hostTime() const = 0;

    /// Shows exactly the newest picture at or before `time`, which is limited to the clip. A newer seek
    /// replaces an older one, which calls back with false. Calls back with true when the picture is shown, or
    /// is known to be missing. The current rate continues.
    virtual void seek(MediaTime time, std::function<void(bool isShown)> completed = {}) = 0;

    virtual void setPitchAlgorithm(PitchAlgorithm algorithm) = 0;
    virtual void setVolume(float volume) = 0; ///< linear, 0 to 1; reached without a click
    /// Moves the playing sound; it neither pauses nor seeks.
    virtual void setSoundOffset(MediaTime offset) = 0;
    /// Replaces the sound without changing picture and transport. An empty function selects the video's own
    /// sound, if it has one, which `facts` says once it is open. The previous sound is silent from here on.
    virtual void setSound(std::function<std::unique_ptr<AudioFile>()> openSound) = 0;

    /// Pictures are no larger than this; 0 by 0: no limit.
    virtual void setPictureSize(PictureSize limit) = 0;
    /// The picture that is shown; nothing before the first is decoded and without pictures.
    virtual std::optional<Picture> picture() const = 0;
    /// Pictures that were due during playback and never shown, since the load.
    virtual std::int64_t droppedPictures() const = 0;
    /// The level of each channel of the sound, over the last block heard; empty while nothing is heard.
    virtual std::vector<ChannelPeak> levels() const = 0;

    /// Calls back with the current time: while the rate is not 0, at each picture of the nominal rate (25
    /// times a second without one), and after a seek.
    [[nodiscard]] virtual Subscription observeTime(std::function<void(MediaTime)> callback) = 0;
    /// The end, or the start in reverse, was reached; the rate is 0 by then.
    [[nodiscard]] virtual Subscription observeEnd(std::function<void()> callback) = 0;
    /// Called when another picture is shown.
    [[nodiscard]] virtual Subscription observePicture(std::function<void()> callback) = 0;
};

/// Makes the players of a program; all of them play through one output. Interface thread.
class PlayerSystem {
  public:
    /// Plays on the machine's sound device, or on the clock alone if there is none.
    static std::unique_ptr<PlayerSystem> create(const std::shared_ptr<MainThread>& mainThread,
                                                std::shared_ptr<const Clock> clock = systemClock());

    virtual ~PlayerSystem() = default;
    /// The player may outlive the system.
    virtual std::unique_ptr<Player> makePlayer() = 0;
    /// The mixer of all sound; null for a system without sound.
    virtual std::shared_ptr<Mixer> mixer() { return nullptr; }
    /// Runs the work on the interface thread after `delay` on the players' clock.
    virtual std::shared_ptr<Timer> after(std::chrono::nanoseconds delay, std::function<void()> work) = 0;
};

/// Players whose time moves only on request: what they show and play is exact and repeatable.
class PulledPlayerSystem : public PlayerSystem {
  public:
    static std::unique_ptr<PulledPlayerSystem> create(std::shared_ptr<MainThread> mainThread);

    /// Moves the time forward; the effects of each report are complete before the next one. Calls back when
    /// all is done. One call at a time.
    virtual void advance(double seconds, std::function<void()> done) = 0;
    /// Receives, from here on, the sound that a device would have played.
    virtual void
    hearSound(std::function<void(const float* left, const float* right, std::size_t frames)> hear) = 0;
    virtual double sampleRate() const = 0; ///< Hz
};

} // namespace orvane::platform
