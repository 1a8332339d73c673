#include "OrvaneSyncApp/Controllers/AudioLevelProvider.h"

#include <algorithm>
#include <utility>

namespace orvane {

std::shared_ptr<AudioLevelProvider>
AudioLevelProvider::create(std::shared_ptr<platform::MainThread> mainThread) {
    return std::shared_ptr<AudioLevelProvider>(
        new AudioLevelProvider([mainThread = std::move(mainThread)](auto delay, auto work) {
            return mainThread->after(delay, std::move(work));
        }));
}

std::shared_ptr<AudioLevelProvider>
AudioLevelProvider::onClockOf(std::shared_ptr<platform::PlayerSystem> players) {
    return std::shared_ptr<AudioLevelProvider>(
        new AudioLevelProvider([players = std::move(players)](auto delay, auto work) {
            return players->after(delay, std::move(work));
        }));
}

AudioLevelProvider::~AudioLevelProvider() {
    if (timer_) timer_->cancel();
}

void AudioLevelProvider::attach(const platform::Player& player) {
    detach();
    player_ = &player;
    takeFacts();
    waitForUpdate();
    changed_.notify();
}

void AudioLevelProvider::waitForUpdate() {
    timer_ = after_(updateInterval, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) self->update();
    });
}

void AudioLevelProvider::takeFacts() {
    isActive_ = player_->facts().hasSound;
    channelCount_ = player_->facts().soundChannelCount;
    levels_ = AudioLevels::empty;
    smoothed_.clear();
}

void AudioLevelProvider::update() {
    waitForUpdate();
    if (player_->facts().hasSound != isActive_ || player_->facts().soundChannelCount != channelCount_) {
        takeFacts();
        if (!isActive_) return changed_.notify();
    }
    if (!isActive_) return;
    auto measured = player_->levels();
    // A paused player returns no levels; this counts as silence.
    measured.resize(std::max(measured.size(), smoothed_.size()));
    smooth(smoothed_, measured, smoothing);
    levels_.channels = smoothed_;
    levels_.channelCount = channelCount_;
    levels_.timestamp = std::chrono::duration<double>(player_->hostTime()).count();
    changed_.notify();
}

void AudioLevelProvider::detach() {
    if (player_ == nullptr) return;
    if (timer_) timer_->cancel();
    timer_.reset();
    player_ = nullptr;
    isActive_ = false;
    levels_ = AudioLevels::empty;
    smoothed_.clear();
    changed_.notify();
}

} // namespace orvane
