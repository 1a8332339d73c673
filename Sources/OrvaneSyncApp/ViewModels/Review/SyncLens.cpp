#include "OrvaneSyncApp/ViewModels/Review/SyncLens.h"

#include "OrvaneSyncApp/ViewModels/Review/PictureTexts.h"
#include "OrvaneSyncCore/Services/Takes/ClipSound.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "Platform/OnQueue.h"
#include "Platform/Playback/FrameReader.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace orvane {

std::optional<SyncLensPlan> syncLensPlan(const SyncGroup& clip, std::optional<double> clapSeconds,
                                         const PlayheadState& playhead, bool isAtPlayhead) {
    if (!clapSeconds || *clapSeconds < 0 || !(*clapSeconds <= playhead.clipDuration)) return std::nullopt;
    ClipSound sound(clip);
    SyncLensPlan plan{.video = clip.video.url,
                      .sound = std::move(sound.take),
                      .soundOffsetSeconds = sound.offsetSeconds,
                      .clapSeconds = *clapSeconds,
                      .frameLength = playhead.frameLength()};
    constexpr double rounding = 1e-6; // a clap between two frames belongs to the later one
    plan.clapFrame = platform::MediaTime::fromSeconds(*clapSeconds + rounding).wholeUnits(plan.frameLength);
    plan.middleFrame = isAtPlayhead ? shownFrame(playhead) : plan.clapFrame;
    return plan;
}

std::string syncLensCaption(const SyncLensPlan& plan, std::size_t picture) {
    const std::int64_t away = plan.middleFrame - 1 + static_cast<std::int64_t>(picture) - plan.clapFrame;
    if (away == 0) return "The clap";
    return counted(std::abs(away), "frame", "frames") + (away < 0 ? " before" : " after");
}

std::string syncLensNote(const SyncGroup& clip, bool hasClap) {
    if (clip.isMOS()) return "This clip has no sound, so no clap is heard.";
    if (hasClap)
        return clip.isLocked
                   ? "The clap is heard outside of the picture of this clip."
                   : "The clap is heard outside of the picture of this clip. Go to the frame of the clap: P "
                     "moves the sound there.";
    if (clip.isLocked)
        return "No clap is heard in the recording of this clip. To set it by eye, unlock the clip first.";
    return "This clip has no clap yet. Go to the clap, by ear or by eye: ⟨updateClapPoint⟩ sets it there.";
}

namespace {

std::vector<SyncLens::Column> readSound(const SyncLensPlan& plan, std::size_t count) {
    const OpenTake take = plan.sound ? openTake(*plan.sound) : OpenTake();
    if (!take || count == 0) return {};
    const double rate = take.audio->sampleRate();
    const auto first = std::llround((plan.startSeconds() - plan.soundOffsetSeconds) * rate);
    const auto frames = std::llround((plan.endSeconds() - plan.startSeconds()) * rate);
    // Before and after the recording there is silence.
    const auto skipped = std::clamp<std::int64_t>(-first, 0, frames);
    const auto channels = static_cast<std::size_t>(take.audio->channelCount());
    std::vector<std::vector<float>> samples(channels, std::vector<float>(static_cast<std::size_t>(frames)));
    std::vector<float*> targets;
    for (auto& channel : samples) targets.push_back(channel.data() + skipped);
    if (take.audio->seek(first + skipped))
        take.audio->read(targets, static_cast<std::size_t>(frames - skipped));
    std::vector<SyncLens::Column> columns(count);
    for (std::size_t i = 0; i < count; ++i) {
        const auto from = i * static_cast<std::size_t>(frames) / count;
        const auto to = std::max((i + 1) * static_cast<std::size_t>(frames) / count, from + 1);
        for (const auto& channel : samples)
            for (std::size_t at = from; at < std::min(to, channel.size()); ++at) {
                if (!std::isfinite(channel[at])) continue;
                columns[i].lowest = std::min(columns[i].lowest, channel[at]);
                columns[i].highest = std::max(columns[i].highest, channel[at]);
            }
    }
    return columns;
}

SyncLens::Seen look(const SyncLensPlan& plan, platform::PictureSize limit, std::size_t columns,
                    const std::stop_token& stop) {
    SyncLens::Seen seen;
    seen.sound = readSound(plan, columns);
    const auto reader = platform::FrameReader::open(plan.video.path);
    if (!reader) return seen;
    for (std::size_t i = 0; i < seen.pictures.size(); ++i) {
        platform::throwIfStopped(stop);
        const std::int64_t frame = plan.middleFrame - 1 + static_cast<std::int64_t>(i);
        const double middle = (static_cast<double>(frame) + 0.5) * plan.frameLength.seconds();
        if (frame < 0 || middle > reader->facts().duration.seconds()) continue;
        seen.pictures.at(i) = reader->pictureAt(platform::MediaTime::fromSeconds(middle), {}, limit, stop);
    }
    return seen;
}

} // namespace

std::shared_ptr<SyncLens> SyncLens::create(std::shared_ptr<platform::MainThread> mainThread) {
    return std::shared_ptr<SyncLens>(new SyncLens(std::move(mainThread)));
}

SyncLens::SyncLens(std::shared_ptr<platform::MainThread> mainThread)
    : mainThread_(std::move(mainThread)), queue_(platform::SerialQueue::create("sync lens")) {}

SyncLens::~SyncLens() {
    if (task_) task_->requestStop();
}

void SyncLens::show(const SyncLensPlan& plan, platform::PictureSize limit, std::size_t columns) {
    if (plan_ == plan && limit_ == limit && columns_ == columns) return;
    // The earlier pictures stay until the new ones are ready, so that nothing flickers with each frame.
    if (seenPlan_ && seenPlan_->video != plan.video) {
        seenPlan_.reset();
        seen_ = {};
    }
    if (task_) task_->requestStop();
    plan_ = plan;
    limit_ = limit;
    columns_ = columns;
    isLoading_ = true;
    changed_.notify();
    task_ = load(weak_from_this(), plan, limit, columns);
}

void SyncLens::clear() {
    if (!plan_) return;
    if (task_) task_->requestStop();
    plan_.reset();
    seenPlan_.reset();
    seen_ = {};
    isLoading_ = false;
    changed_.notify();
}

platform::Task SyncLens::load(std::weak_ptr<SyncLens> weak, SyncLensPlan plan, platform::PictureSize limit,
                              std::size_t columns) {
    auto self = weak.lock();
    auto looking = platform::onQueue(
        *self->queue_, self->mainThread_,
        [plan, limit, columns](const std::stop_token& stop) { return look(plan, limit, columns, stop); });
    self.reset();
    Seen seen = co_await looking;
    self = weak.lock();
    if (!self || self->plan_ != plan || self->limit_ != limit) co_return;
    self->seen_ = std::move(seen);
    self->seenPlan_ = std::move(plan);
    self->isLoading_ = false;
    self->changed_.notify();
}

} // namespace orvane
