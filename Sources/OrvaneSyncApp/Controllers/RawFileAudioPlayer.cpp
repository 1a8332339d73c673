#include "OrvaneSyncApp/Controllers/RawFileAudioPlayer.h"

#include <algorithm>
#include <utility>

namespace orvane {

std::shared_ptr<RawFileAudioPlayer>
RawFileAudioPlayer::create(std::shared_ptr<platform::PlayerSystem> players,
                           std::shared_ptr<WaveformState> waveform) {
    return std::shared_ptr<RawFileAudioPlayer>(
        new RawFileAudioPlayer(std::move(players), std::move(waveform)));
}

RawFileAudioPlayer::RawFileAudioPlayer(std::shared_ptr<platform::PlayerSystem> players,
                                       std::shared_ptr<WaveformState> waveform)
    : players_(std::move(players)), waveform_(std::move(waveform)) {}

void RawFileAudioPlayer::togglePlayback(const MediaAsset& asset) {
    if (currentAssetID_ != asset.id) return load(asset);
    setPlaying(!isPlaying_);
}

void RawFileAudioPlayer::makePlayer() {
    player_ = players_->makePlayer();
    const auto weak = weak_from_this();
    times_ = player_->observeTime([weak](platform::MediaTime time) {
        const auto self = weak.lock();
        if (!self || !self->currentAssetID_) return;
        self->currentTime_ = time.seconds();
        self->changed_.notify();
    });
    end_ = player_->observeEnd([weak] {
        const auto self = weak.lock();
        if (!self || !self->currentAssetID_) return;
        self->isPlaying_ = false;
        self->currentTime_ = 0;
        self->player_->seek({});
        self->changed_.notify();
    });
}

void RawFileAudioPlayer::load(const MediaAsset& asset) {
    stop();
    if (!player_) makePlayer();
    currentAssetID_ = asset.id;
    platform::PlayerItem item;
    item.openSound = [path = asset.url.path] { return platform::AudioFile::open(path); };
    // Playing begins when the file is open; until then, `isPlaying_` is only the wish, which the user can
    // still change.
    isPlaying_ = true;
    player_->load(std::move(item),
                  [weak = weak_from_this(), id = asset.id](const platform::PlayerFacts& facts) {
                      const auto self = weak.lock();
                      if (self && self->currentAssetID_ == id) self->opened(facts);
                  });
    waveform_->load(asset.url, waveformBins, false);
    changed_.notify();
}

void RawFileAudioPlayer::opened(const platform::PlayerFacts& facts) {
    if (!facts.hasSound) return stop();
    duration_ = facts.duration.seconds();
    player_->setRate(isPlaying_ ? 1 : 0);
    changed_.notify();
}

void RawFileAudioPlayer::setPlaying(bool isPlaying) {
    isPlaying_ = isPlaying;
    if (player_->isLoaded()) player_->setRate(isPlaying ? 1 : 0);
    changed_.notify();
}

void RawFileAudioPlayer::seek(double toFraction) {
    if (!player_) return;
    currentTime_ = std::clamp(toFraction, 0.0, 1.0) * duration_;
    player_->seek(platform::MediaTime::fromSeconds(currentTime_));
    changed_.notify();
}

void RawFileAudioPlayer::stop() {
    if (!currentAssetID_) return;
    player_->unload();
    currentAssetID_.reset();
    isPlaying_ = false;
    currentTime_ = duration_ = 0;
    waveform_->reset();
    changed_.notify();
}

} // namespace orvane
