#include "OrvaneSyncCLI/PlayRange.h"

#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/RunUntilDone.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Services/Playback/ShuttleAudioEngine.h"
#include "Platform/Completion.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace orvane::cli {

using platform::MediaTime;

RangePlayer::RangePlayer(const std::shared_ptr<platform::RunLoop>& loop, platform::PlayerSystem& players,
                         PlayRange range)
    : range_(std::move(range)), player_(players.makePlayer()) {
    const auto loaded = std::make_shared<platform::Completion>(loop);
    platform::PlayerItem item{.videoPath = range_.video,
                              .openSound = nullptr,
                              .soundOffset = MediaTime::fromSeconds(range_.offset)};
    if (range_.sound) item.openSound = [sound = *range_.sound] { return openTake(sound).audio; };
    player_->load(std::move(item), [loaded](const platform::PlayerFacts&) { loaded->end(); });
    runUntilDone(*loop, loaded->task());
    const platform::PlayerFacts& facts = player_->facts();
    if (!player_->isLoaded() || (!facts.hasPicture && !facts.hasSound))
        throw CommandError("nothing in '" + range_.video + "' can be played");
    to_ = std::min(range_.to.value_or(facts.duration.seconds()), facts.duration.seconds());
    if (!(to_ > range_.from))
        throw CommandError("'" + range_.video + "' ends at " +
                           formatted("%.3f s, before --from", facts.duration.seconds()));
    const auto shown = std::make_shared<platform::Completion>(loop);
    player_->seek(MediaTime::fromSeconds(range_.rate > 0 ? range_.from : to_),
                  [shown](bool) { shown->end(); });
    runUntilDone(*loop, shown->task());
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
