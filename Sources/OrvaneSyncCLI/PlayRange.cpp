#include "OrvaneSyncCLI/PlayRange.h"

#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/RunUntilDone.h"
#include "OrvaneSyncCLI/SoundFile.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Services/Playback/ShuttleAudioEngine.h"
#include "OrvaneSyncCore/Services/Takes/ReadFailed.h"
#include "Platform/Completion.h"
#include "Platform/ReadErrorWatch.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <mutex>
#include <span>
#include <utility>
#include <vector>

namespace orvane::cli {

using platform::MediaTime;

namespace {

/// The sound of a take that other code also uses.
class SharedSound final : public platform::AudioFile {
  public:
    explicit SharedSound(std::shared_ptr<const OpenTake> take) : take_(std::move(take)) {}

    double sampleRate() const override { return take_->audio->sampleRate(); }
    int channelCount() const override { return take_->audio->channelCount(); }
    std::int64_t frameCount() const override { return take_->audio->frameCount(); }
    std::int64_t promisedFrames() const override { return take_->audio->promisedFrames(); }
    std::optional<std::int64_t> failedAt() const override { return take_->audio->failedAt(); }
    bool seek(std::int64_t frame) override { return take_->audio->seek(frame); }
    std::size_t read(std::span<float* const> channels, std::size_t frames) override {
        return take_->audio->read(channels, frames);
    }
    std::unique_ptr<AudioFile> another() const override { return take_->audio->another(); }

  private:
    std::shared_ptr<const OpenTake> take_;
};

} // namespace

struct RangePlayer::Opened {
    std::mutex mutex;
    std::vector<std::shared_ptr<const OpenTake>> takes;

    std::unique_ptr<platform::AudioFile> open(const PlayRange& range) {
        auto take = std::make_shared<const OpenTake>(range.sound ? openTake(*range.sound)
                                                                 : soundOfVideo(range.video));
        if (!*take) return nullptr;
        const std::lock_guard lock(mutex);
        return std::make_unique<SharedSound>(takes.emplace_back(std::move(take)));
    }
    static OpenTake soundOfVideo(const std::string& path) {
        return {platform::AudioFile::openAllTracks(path), nullptr, FileURL{path}.lastPathComponent()};
    }
};

RangePlayer::RangePlayer(const std::shared_ptr<platform::RunLoop>& loop, platform::PlayerSystem& players,
                         PlayRange range)
    : range_(std::move(range)), opened_(std::make_shared<Opened>()),
      errorsBefore_(platform::ReadErrorWatch::errorsOfAllThreads()), player_(players.makePlayer()) {
    const auto loaded = std::make_shared<platform::Completion>(loop);
    platform::PlayerItem item{.videoPath = range_.video,
                              .openSound = [range = range_, opened = opened_] { return opened->open(range); },
                              .soundOffset = MediaTime::fromSeconds(range_.sound ? range_.offset : 0)};
    player_->load(std::move(item), [loaded](const platform::PlayerFacts&) { loaded->end(); });
    runUntilDone(*loop, loaded->task());
    const platform::PlayerFacts& facts = player_->facts();
    if (!player_->isLoaded() || (!facts.hasPicture && !facts.hasSound)) {
        const std::string missed = missedLibraryText();
        throw CommandError("nothing in '" + range_.video + "' can be played" +
                           (missed.empty() ? "" : ": " + missed));
    }
    to_ = std::min(range_.to.value_or(facts.duration.seconds()), facts.duration.seconds());
    if (!(to_ > range_.from))
        throw CommandError("'" + range_.video + "' ends at " +
                           formatted("%.3f s, before --from", facts.duration.seconds()));
    const auto shown = std::make_shared<platform::Completion>(loop);
    player_->seek(MediaTime::fromSeconds(range_.rate > 0 ? range_.from : to_),
                  [shown](bool) { shown->end(); });
    runUntilDone(*loop, shown->task());
}

void RangePlayer::throwIfReadFailed() const {
    {
        const std::lock_guard lock(opened_->mutex);
        for (const auto& take : opened_->takes) take->throwIfReadFailed();
    }
    // The remaining errors are of pictures, which are read a little ahead of the shown one.
    if (platform::ReadErrorWatch::errorsOfAllThreads() != errorsBefore_)
        throw ReadFailed({FileURL{range_.video}.lastPathComponent(), player_->currentTime().seconds(),
                          player_->facts().duration.seconds()});
}

double RangePlayer::outputSeconds() const { return clipSeconds() / std::abs(range_.rate); }

double RangePlayer::done(MediaTime at) const {
    const double passed = range_.rate > 0 ? at.seconds() - range_.from : to_ - at.seconds();
    return std::clamp(passed / clipSeconds(), 0.0, 1.0);
}

void RangePlayer::start() {
    constexpr double almostNormal = 0.999;
    const AudioRenderPlan plan = std::abs(range_.rate) < almostNormal
                                     ? AudioRenderPlan::slowMotion
                                     : ShuttleAudioEngine::planForShuttleRate(range_.rate);
    player_->setPitchAlgorithm(plan.algorithm);
    player_->setVolume(plan.isAudible ? 1 : 0);
    player_->setRate(range_.rate);
}

void RangePlayer::showProgress(ProgressLine& line, double fraction, std::string_view phase) const {
    line.show({.phase = std::string(phase),
               .current = static_cast<int>(fraction * clipSeconds()),
               .total = static_cast<int>(std::ceil(clipSeconds()))},
              fraction);
}

} // namespace orvane::cli
