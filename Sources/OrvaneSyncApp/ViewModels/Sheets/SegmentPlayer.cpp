#include "OrvaneSyncApp/ViewModels/Sheets/SegmentPlayer.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <utility>
#include <vector>

namespace orvane {

namespace {

class SegmentFile : public platform::AudioFile {
  public:
    SegmentFile(std::unique_ptr<AudioFile> file, const Segment& segment)
        : file_(std::move(file)),
          channel_(std::clamp(segment.channelIndex, 0, std::max(file_->channelCount() - 1, 0))),
          start_(segment.start),
          frames_(std::clamp<std::int64_t>(std::min(segment.end, file_->frameCount()) - segment.start, 0,
                                           file_->frameCount())) {
        file_->seek(start_);
    }
    double sampleRate() const override { return file_->sampleRate(); }
    int channelCount() const override { return 1; }
    std::int64_t frameCount() const override { return frames_; }
    bool seek(std::int64_t frame) override {
        if (frame < 0 || frame > frames_ || !file_->seek(start_ + frame)) return false;
        at_ = frame;
        return true;
    }
    std::size_t read(std::span<float* const> channels, std::size_t frames) override {
        const auto left = static_cast<std::size_t>(frames_ - at_);
        const std::size_t wanted = std::min(frames, left);
        // A file reads its channels from the first one on, so the channels before ours are read and
        // discarded.
        unused_.resize(wanted);
        std::vector<float*> targets(static_cast<std::size_t>(channel_) + 1, unused_.data());
        if (!channels.empty()) targets.back() = channels.front();
        const std::size_t read = file_->read(targets, wanted);
        at_ += static_cast<std::int64_t>(read);
        return read;
    }

  private:
    const std::unique_ptr<AudioFile> file_;
    const int channel_;
    const std::int64_t start_, frames_;
    std::int64_t at_ = 0;
    std::vector<float> unused_;
};

} // namespace

std::unique_ptr<platform::AudioFile> openSegment(const Segment& segment) {
    auto file = platform::AudioFile::open(segment.path);
    return file ? std::make_unique<SegmentFile>(std::move(file), segment) : nullptr;
}

SegmentPlayer::SegmentPlayer(std::function<std::shared_ptr<platform::PlayerSystem>()> players)
    : openPlayers_(std::move(players)) {}

bool SegmentPlayer::toggle(const Segment& segment) {
    if (playingID_ == segment.id) {
        stop();
        return true;
    }
    if (!player_) {
        players_ = openPlayers_ ? openPlayers_() : nullptr;
        if (!players_) return false;
        player_ = players_->makePlayer();
        end_ = player_->observeEnd([this] { setPlaying(std::nullopt); });
    }
    platform::PlayerItem item;
    item.openSound = [segment] { return openSegment(segment); };
    player_->load(std::move(item), [this](const platform::PlayerFacts& facts) {
        if (facts.hasSound)
            player_->setRate(1);
        else
            setPlaying(std::nullopt);
    });
    setPlaying(segment.id);
    return true;
}

void SegmentPlayer::stop() {
    if (player_) player_->unload();
    setPlaying(std::nullopt);
}

void SegmentPlayer::setPlaying(std::optional<UUID> id) {
    if (playingID_ == id) return;
    playingID_ = id;
    if (whenChanged) whenChanged();
}

} // namespace orvane
