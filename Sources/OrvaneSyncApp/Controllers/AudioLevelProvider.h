#pragma once

#include "OrvaneSyncCore/Services/Playback/AudioLevels.h"
#include "Platform/Listeners.h"
#include "Platform/MainThread.h"
#include "Platform/Playback/Player.h"

#include <chrono>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace orvane {

/// The level meters of a player: 60 times a second the smoothed level of every channel that is heard. Without
/// sound the levels fall. Interface thread; held by a shared pointer, because its timer holds a weak one.
class AudioLevelProvider : public std::enable_shared_from_this<AudioLevelProvider> {
  public:
    static constexpr std::chrono::nanoseconds updateInterval{
        std::chrono::nanoseconds(std::chrono::seconds(1)) / 60};
    /// Share of the old value that each update keeps.
    static constexpr float smoothing = 0.85F;

    static std::shared_ptr<AudioLevelProvider> create(std::shared_ptr<platform::MainThread> mainThread);
    /// The measuring timer runs on the clock of the players.
    static std::shared_ptr<AudioLevelProvider> onClockOf(std::shared_ptr<platform::PlayerSystem> players);
    ~AudioLevelProvider();

    /// `player` is loaded, and outlives this object or the call of `detach`. The meters are off while it has
    /// no sound, and start again when it has another sound.
    void attach(const platform::Player& player);
    void detach();

    const AudioLevels& levels() const { return levels_; }
    bool isActive() const { return isActive_; }
    int channelCount() const { return channelCount_; }
    /// Calls back whenever one of these values changes.
    platform::Subscription onChange(std::function<void()> callback) {
        return changed_.add(std::move(callback));
    }

  private:
    using After =
        std::function<std::shared_ptr<platform::Timer>(std::chrono::nanoseconds, std::function<void()>)>;
    explicit AudioLevelProvider(After after) : after_(std::move(after)) {}
    void waitForUpdate();
    void update();
    void takeFacts();

    const After after_;
    const platform::Player* player_ = nullptr;
    AudioLevels levels_;
    bool isActive_ = false;
    int channelCount_ = 0;
    std::vector<ChannelLevel> smoothed_;
    std::shared_ptr<platform::Timer> timer_;
    platform::Listeners<> changed_;
};

} // namespace orvane
