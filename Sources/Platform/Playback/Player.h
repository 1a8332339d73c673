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
    timeDomain, ///< kept; the quickest
    varispeed,  ///< follows the rate, as tape does
};

/// A composition of a picture and a sound that begins `soundOffset` later than the picture (earlier where
/// negative: its head is not heard). It ends where the picture ends; where there is none, where the sound
/// does.
struct PlayerItem {
    /// In the bytes of the file system; empty where there is sound alone.
    std::string videoPath{};
    /// Opens the sound that takes the place of the video's own; called on a thread of the player. Empty: the
    /// video's own sound, at offset 0 whatever `soundOffset` says.
    std::function<std::unique_ptr<AudioFile>()> openSound = nullptr;
    MediaTime soundOffset{};
    /// What the file says of a picture that cannot be decoded here; 0: not known, the sound's end is the
    /// item's.
    MediaTime pictureDuration{};
    double pictureFrameRate = 0;
};

struct PlayerFacts {
    bool hasPicture = false;
    bool hasSound = false;
    MediaTime duration;
    double nominalFrameRate = 0; ///< pictures per second; 0 where it is not known
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

    /// Replaces the item: stops, keeps the volume and the size of pictures, and stands at 0. Calls back on
    /// the interface thread when the item is open; a load that a newer one replaced never calls back.
    virtual void load(PlayerItem item, std::function<void(const PlayerFacts&)> loaded) = 0;
    virtual void unload() = 0;
    virtual bool isLoaded() const = 0;
    virtual const PlayerFacts& facts() const = 0;

    /// The moment of the clip that is heard and seen; exact while the rate is 0.
    virtual MediaTime currentTime() const = 0;
    virtual double rate() const = 0; ///< signed, 0 while paused and after an end was reached
    /// From -32 to 32. From pause, a clip begins to run forward when its first pictures are decoded, for
    /// which it waits a moment. Reaching the end of the clip, or 0 in reverse, stops there and reports it
    /// once.
    virtual void setRate(double rate) = 0;
    /// Runs at `rate` so that `time` is heard at the moment `hostTime` of the system's clock (Clock::now):
    /// the same moment for several players is the same frame of the output.
    virtual void setRate(double rate, MediaTime time, std::chrono::nanoseconds hostTime) = 0;
    /// The moment from which `setRate` with a host time counts.
    virtual std::chrono::nanoseconds hostTime() const = 0;

    /// Shows exactly the newest picture at or before `time`, which is brought within the clip. A newer seek
    /// replaces an older one, which calls back with false; true when the picture is there, or is known to be
    /// missing. Goes on at the rate that runs.
    virtual void seek(MediaTime time, std::function<void(bool isShown)> completed = {}) = 0;

    virtual void setPitchAlgorithm(PitchAlgorithm algorithm) = 0;
    virtual void setVolume(float volume) = 0; ///< linear, 0 to 1; reached without a click
    /// Under the running sound: it neither pauses nor seeks.
    virtual void setSoundOffset(MediaTime offset) = 0;
    /// Replaces the sound without touching picture and transport. An empty function: the video's own, if it
    /// has one, which `facts` says once it is open. The one before is silent from here on.
    virtual void setSound(std::function<std::unique_ptr<AudioFile>()> openSound) = 0;

    /// Pictures come no larger than this; 0 by 0 is without a limit.
    virtual void setPictureSize(PictureSize limit) = 0;
    /// The one that is shown now; nothing before the first is decoded and without pictures.
    virtual std::optional<Picture> picture() const = 0;
    /// Pictures that were due while playing and never shown, since the load.
    virtual std::int64_t droppedPictures() const = 0;
    /// Of each channel of the sound, over the last block heard; empty while nothing is heard.
    virtual std::vector<ChannelPeak> levels() const = 0;

    /// While the rate is not 0, at each picture of the nominal rate (at 25 a second without one), and after
    /// a seek: the current time.
    [[nodiscard]] virtual Subscription observeTime(std::function<void(MediaTime)> callback) = 0;
    /// The end, or the start in reverse, was reached; the rate is 0 by then.
    [[nodiscard]] virtual Subscription observeEnd(std::function<void()> callback) = 0;
    /// Another picture is shown.
    [[nodiscard]] virtual Subscription observePicture(std::function<void()> callback) = 0;
};

/// Makes the players of a program; all of them sound through one output. Interface thread.
class PlayerSystem {
  public:
    /// On the machine's sound device, or on the clock alone where it has none.
    static std::unique_ptr<PlayerSystem> create(const std::shared_ptr<MainThread>& mainThread,
                                                std::shared_ptr<const Clock> clock = systemClock());

    virtual ~PlayerSystem() = default;
    /// It may outlive the system.
    virtual std::unique_ptr<Player> makePlayer() = 0;
    /// What all sound passes through; null where nothing sounds.
    virtual std::shared_ptr<Mixer> mixer() { return nullptr; }
    /// Runs the work on the interface thread once so much time of the players' clock has passed.
    virtual std::shared_ptr<Timer> after(std::chrono::nanoseconds delay, std::function<void()> work) = 0;
};

/// Players whose time moves only when it is told to: what they show and play is exact and repeatable.
class PulledPlayerSystem : public PlayerSystem {
  public:
    static std::unique_ptr<PulledPlayerSystem> create(std::shared_ptr<MainThread> mainThread);

    /// Moves the time on; each report acts before the next one comes. Calls back when all is done. One at a
    /// time.
    virtual void advance(double seconds, std::function<void()> done) = 0;
    /// Takes the sound that would have gone to a device, from here on.
    virtual void
    hearSound(std::function<void(const float* left, const float* right, std::size_t frames)> hear) = 0;
    virtual double sampleRate() const = 0; ///< Hz
};

} // namespace orvane::platform
