#pragma once

#include "Platform/Listeners.h"
#include "Platform/MainThread.h"
#include "Platform/Playback/Player.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace orvane::test {

class FakePlayerSystem;

/// A player without files. It moves by the clock of its system, in whole milliseconds, and records what was
/// requested. Loads and seeks end when the posted work of the main thread runs.
class FakePlayer final : public platform::Player {
  public:
    explicit FakePlayer(FakePlayerSystem& system) : system_(system) {}
    ~FakePlayer() override;

    void load(platform::PlayerItem newItem,
              std::function<void(const platform::PlayerFacts&)> loaded) override;
    void unload() override {
        stopAt({});
        ++loads_;
        dropSeek();
        isLoaded_ = false;
    }
    bool isLoaded() const override { return isLoaded_; }
    const platform::PlayerFacts& facts() const override { return facts_; }
    platform::MediaTime currentTime() const override;
    double rate() const override { return rate_; }
    void setRate(double rate) override;
    void setRate(double rate, platform::MediaTime time, std::chrono::nanoseconds hostTime) override;
    std::chrono::nanoseconds hostTime() const override;
    void seek(platform::MediaTime time, std::function<void(bool)> completed) override;
    void setPitchAlgorithm(platform::PitchAlgorithm algorithm) override { pitch = algorithm; }
    void setVolume(float newVolume) override { volume = newVolume; }
    void setSoundOffset(platform::MediaTime offset) override { offsets.push_back(offset); }
    void setSound(std::function<std::unique_ptr<platform::AudioFile>()> /*openSound*/) override;
    void setPictureSize(platform::PictureSize /*limit*/) override {}
    std::optional<platform::Picture> picture() const override { return std::nullopt; }
    std::int64_t droppedPictures() const override { return 0; }
    std::vector<platform::ChannelPeak> levels() const override { return heard; }
    platform::Subscription observeTime(std::function<void(platform::MediaTime)> callback) override {
        return time_.add(std::move(callback));
    }
    platform::Subscription observeEnd(std::function<void()> callback) override {
        return end_.add(std::move(callback));
    }
    platform::Subscription observePicture(std::function<void()> callback) override {
        return picture_.add(std::move(callback));
    }
    void moved();

    platform::PlayerItem item;
    platform::PitchAlgorithm pitch = platform::PitchAlgorithm::timeDomain;
    float volume = 1;
    std::vector<platform::ChannelPeak> heard; ///< returned by `levels`
    std::vector<platform::MediaTime> offsets; ///< that were set for the sound
    int sounds = 0;                           ///< how often the sound was replaced
    int seeks = 0;
    platform::MediaTime cutOffAt{86400, 1}; ///< the real end of the file, whatever it states
    std::chrono::nanoseconds startsAt{0};   ///< of the last start

  private:
    void stopAt(platform::MediaTime time) {
        rest_ = time;
        rate_ = 0;
    }
    void dropSeek() {
        ++seeks;
        if (auto dropped = std::exchange(seekDone_, nullptr)) dropped(false);
    }

    FakePlayerSystem& system_;
    platform::MediaTime end() const { return std::min(facts_.duration, cutOffAt); }
    platform::PlayerFacts facts_;
    bool isLoaded_ = false;
    int loads_ = 0;
    double rate_ = 0;
    platform::MediaTime rest_;          ///< clip time when stopped, or at `since_` when running
    std::chrono::nanoseconds since_{0}; ///< when it began to run
    std::int64_t reported_ = -1;        ///< the last frame
    std::function<void(bool)> seekDone_;
    platform::Listeners<platform::MediaTime> time_;
    platform::Listeners<> end_, picture_;
};

/// Its time moves by `advance`, one millisecond at a time.
class FakePlayerSystem final : public platform::PulledPlayerSystem {
  public:
    explicit FakePlayerSystem(std::shared_ptr<platform::MainThread> mainThread)
        : mainThread_(std::move(mainThread)) {}

    std::unique_ptr<platform::Player> makePlayer() override {
        auto player = std::make_unique<FakePlayer>(*this);
        players.push_back(player.get());
        return player;
    }
    std::shared_ptr<platform::Timer> after(std::chrono::nanoseconds delay,
                                           std::function<void()> work) override {
        auto timer = std::make_shared<Due>(std::move(work));
        timers_.emplace(now + delay, timer);
        return timer;
    }
    void advance(double seconds, std::function<void()> done) override {
        for (auto left = std::llround(seconds * 1000); left > 0; --left) {
            now += std::chrono::milliseconds(1);
            for (FakePlayer* player : std::vector(players)) player->moved();
            while (!timers_.empty() && timers_.begin()->first <= now) {
                const auto timer = timers_.begin()->second;
                timers_.erase(timers_.begin());
                if (const auto work = std::exchange(timer->work, nullptr)) work();
            }
            settle();
        }
        if (done) done();
    }
    void hearSound(std::function<void(const float*, const float*, std::size_t)> /*hear*/) override {}
    double sampleRate() const override { return 48'000; }

    const platform::PlayerFacts& factsOf(const std::string& path) const {
        const auto found = files.find(path);
        return found == files.end() ? usual : found->second;
    }
    platform::MainThread& mainThread() { return *mainThread_; }

    std::vector<FakePlayer*> players; ///< in the order in which they were made
    std::map<std::string, platform::PlayerFacts> files;
    platform::PlayerFacts usual{
        .hasPicture = true, .hasSound = true, .duration = {10, 1}, .nominalFrameRate = 25};
    std::chrono::nanoseconds now{std::chrono::hours(1)};
    /// Called after each millisecond: the main thread handles what was reported.
    std::function<void()> settle = [] {};

  private:
    struct Due final : platform::Timer {
        explicit Due(std::function<void()> todo) : work(std::move(todo)) {}
        void cancel() override { work = nullptr; }
        std::function<void()> work;
    };
    std::shared_ptr<platform::MainThread> mainThread_;
    std::multimap<std::chrono::nanoseconds, std::shared_ptr<Due>> timers_;
};

inline FakePlayer::~FakePlayer() { std::erase(system_.players, this); }

inline void FakePlayer::load(platform::PlayerItem newItem,
                             std::function<void(const platform::PlayerFacts&)> loaded) {
    unload();
    item = std::move(newItem);
    const int number = loads_;
    system_.mainThread().post([this, &system = system_, number, loaded = std::move(loaded)] {
        const auto& players = system.players; // this player may be destroyed by then
        if (std::ranges::find(players, this) == players.end() || loads_ != number) return;
        facts_ = system_.factsOf(item.videoPath);
        isLoaded_ = true;
        loaded(facts_);
    });
}

inline void FakePlayer::setSound(std::function<std::unique_ptr<platform::AudioFile>()> /*openSound*/) {
    ++sounds;
    facts_ = system_.factsOf(item.videoPath);
}

inline std::chrono::nanoseconds FakePlayer::hostTime() const { return system_.now; }

inline platform::MediaTime FakePlayer::currentTime() const {
    using std::chrono::milliseconds;
    const auto ran = std::chrono::duration_cast<milliseconds>(system_.now - since_).count();
    if (rate_ == 0 || ran <= 0) return rest_;
    const platform::MediaTime moved{ran * std::llround(rate_ * 4), 4000};
    return std::clamp(rest_ + moved, platform::MediaTime(), end());
}

inline void FakePlayer::setRate(double rate) { setRate(rate, currentTime(), system_.now); }

inline void FakePlayer::setRate(double rate, platform::MediaTime time, std::chrono::nanoseconds hostTime) {
    rest_ = time;
    since_ = startsAt = hostTime;
    rate_ = rate;
}

inline void FakePlayer::seek(platform::MediaTime time, std::function<void(bool)> completed) {
    dropSeek();
    rest_ = std::clamp(time, platform::MediaTime(), facts_.duration);
    since_ = system_.now;
    seekDone_ = std::move(completed);
    system_.mainThread().post([this, number = seeks] {
        const auto& players = system_.players;
        if (std::ranges::find(players, this) == players.end() || seeks != number) return;
        time_.notify(currentTime());
        if (auto done = std::exchange(seekDone_, nullptr)) done(true);
    });
}

inline void FakePlayer::moved() {
    if (rate_ == 0) return;
    const platform::MediaTime time = currentTime();
    const bool isAtEnd = rate_ > 0 ? time >= end() : time <= platform::MediaTime();
    const auto frame = static_cast<std::int64_t>(std::floor(time.seconds() * facts_.nominalFrameRate + 1e-6));
    if (std::exchange(reported_, frame) != frame || isAtEnd) time_.notify(time);
    if (!isAtEnd || rate_ == 0 || currentTime() != time) return;
    stopAt(time);
    end_.notify();
}

} // namespace orvane::test
