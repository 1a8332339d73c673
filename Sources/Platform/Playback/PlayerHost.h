#pragma once

#include "Platform/MainThread.h"
#include "Platform/Playback/Mixer.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace orvane::platform {

/// The part of a player that its system uses. Interface thread.
class HostedPlayer {
  public:
    virtual ~HostedPlayer() = default;
    /// The work that is needed before time may reach this frame of the output: decoding pictures, reading
    /// sound. Run on another thread; null if there is none.
    virtual std::function<void()> preparation(std::int64_t outputFrame) = 0;
    /// For a loaded clip whose sound is being replaced: calls back on the interface thread when the new sound
    /// is in place, or when yet another is to be opened. False, without a call, if none is being opened.
    virtual bool whenSoundIsOpen(std::function<void()> opened) = 0;
};

/// What all players use: the frames of one output as their time. Interface thread.
class PlayerHost {
  public:
    virtual ~PlayerHost() = default;

    Mixer& mixer() { return *mixer_; }
    const std::shared_ptr<Mixer>& sharedMixer() const { return mixer_; }
    MainThread& mainThread() { return *mainThread_; }
    const std::shared_ptr<MainThread>& sharedMainThread() const { return mainThread_; }
    double sampleRate() const { return mixer_->sampleRate(); }
    void add(std::weak_ptr<HostedPlayer> player) { players_.push_back(std::move(player)); }

    /// Whether time continues while pictures are decoded, so that a start has to wait for the first ones.
    virtual bool runsByItself() const = 0;
    /// The frame that is heard, as known on this thread.
    virtual double heardFrame() const = 0;
    /// The first frame from which a change can be heard completely.
    virtual std::int64_t earliestStart() const = 0;
    /// Runs the work when this frame is heard.
    virtual std::shared_ptr<Timer> atFrame(std::int64_t frame, std::function<void()> work) = 0;
    virtual std::chrono::nanoseconds hostTime() const = 0;
    /// The frame that is heard then; equal times give equal frames.
    virtual std::int64_t frameAt(std::chrono::nanoseconds hostTime) = 0;

  protected:
    PlayerHost(std::shared_ptr<MainThread> mainThread, std::shared_ptr<Mixer> mixer)
        : mainThread_(std::move(mainThread)), mixer_(std::move(mixer)) {}

    const std::shared_ptr<MainThread> mainThread_;
    const std::shared_ptr<Mixer> mixer_;
    std::vector<std::weak_ptr<HostedPlayer>> players_;
};

std::unique_ptr<class Player> makeHostedPlayer(const std::shared_ptr<PlayerHost>& host);

/// Players on an output that counts its frames by the clock.
std::unique_ptr<class PlayerSystem> makePlayerSystem(const std::shared_ptr<MainThread>& mainThread,
                                                     std::shared_ptr<const Clock> clock,
                                                     std::unique_ptr<AudioOutput> output);

} // namespace orvane::platform
