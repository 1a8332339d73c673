#include "OrvaneSyncApp/Controllers/PlayedSound.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace orvane {

namespace {

constexpr double leastOffsetChange = 0.0001; // seconds

} // namespace

std::function<std::unique_ptr<platform::AudioFile>()> PlayedSound::opener() const {
    if (!applied_) return nullptr;
    return [sound = *applied_] { return openTake(sound).audio; };
}

void PlayedSound::begin(std::optional<TakeSound> audio, double offsetSeconds) {
    clear();
    audio_ = std::move(audio);
    applied_ = audio_;
    state_.syncOffsetSeconds = appliedOffset_ = std::isfinite(offsetSeconds) ? offsetSeconds : 0;
}

void PlayedSound::clear() {
    audio_.reset();
    mixdown_.reset();
}

bool PlayedSound::give(platform::Player& player, FrameBlips* blips) {
    std::optional<TakeSound> wanted = mixdown_ ? std::optional<TakeSound>(*mixdown_) : audio_;
    if (wanted == applied_) return false;
    applied_ = std::move(wanted);
    if (blips != nullptr) blips->load(applied_);
    player.setSound(opener());
    return true;
}

void PlayedSound::setVolume(float volume, platform::Player* player) {
    state_.volume = std::isfinite(volume) ? std::clamp(volume, 0.0F, 1.0F) : 0;
    if (player != nullptr && !state_.isDucking) player->setVolume(state_.volume);
}

bool PlayedSound::isOffsetNew() const {
    return std::abs(state_.syncOffsetSeconds - appliedOffset_) > leastOffsetChange;
}

void PlayedSound::giveOffset(platform::Player& player) {
    appliedOffset_ = state_.syncOffsetSeconds;
    player.setSoundOffset(platform::MediaTime::fromSeconds(appliedOffset_));
}

bool PlayedSound::render(const AudioRenderPlan& plan, platform::Player& player) {
    player.setPitchAlgorithm(plan.algorithm);
    if (state_.isDucking != plan.isAudible) return false;
    state_.isDucking = !plan.isAudible;
    player.setVolume(state_.isDucking ? 0 : state_.volume);
    return true;
}

} // namespace orvane
