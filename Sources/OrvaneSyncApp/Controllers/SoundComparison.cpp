#include "OrvaneSyncApp/Controllers/SoundComparison.h"

#include "OrvaneSyncCore/Services/Waveform/SoundLag.h"
#include "Platform/OnQueue.h"

#include <unordered_set>
#include <utility>

namespace orvane {

SoundComparison::SoundComparison(OpenWork& work)
    : work_(work),
      shown_(platform::Throttle<Progress>::create(work.environment.mainThread, work.environment.clock,
                                                  platform::progressInterval,
                                                  [this](Progress latest) { show(latest); })) {}

SoundComparison::~SoundComparison() { shown_->close(); }

platform::Task SoundComparison::compare(const std::vector<UUID>& clips,
                                        std::shared_ptr<ComparedSound> result) {
    work_.notices.assertOnMainThread();
    if (!queue_) queue_ = platform::SerialQueue::create("comparison");
    const std::unordered_set<UUID> named(clips.begin(), clips.end());
    SyncGroupList compared =
        work_.syncGroups().filtered([&](const SyncGroup& clip) { return named.contains(clip.id); });
    show(Progress{});
    return work_.runOnClips(run(work_.weak(this), std::move(compared), std::move(result), ++number_));
}

void SoundComparison::show(std::optional<Progress> progress) {
    progress_ = progress;
    work_.notify(ImportField::progress);
}

platform::Task SoundComparison::run(std::weak_ptr<SoundComparison> weak, SyncGroupList clips,
                                    std::shared_ptr<ComparedSound> result, std::uint64_t number) {
    auto self = weak.lock();
    const auto end = [weak, number] {
        const auto own = weak.lock();
        if (!own || own->number_ != number) return;
        own->shown_->drop();
        own->show(std::nullopt);
    };
    auto comparing = platform::onQueue(
        *self->queue_, self->work_.environment.mainThread,
        [clips = std::move(clips), shown = std::weak_ptr(self->shown_)](const std::stop_token& stop) {
            const auto pairs = SoundLag::pairsOf(clips);
            const HeardSound heard = SoundLag::heardEach(pairs, stop, [&](std::size_t done) {
                if (const auto own = shown.lock()) own->post({done, pairs.size()});
            });
            return ComparedSound::of(clips, heard);
        });
    self.reset();
    try {
        *result = co_await comparing;
    } catch (...) {
        end();
        throw;
    }
    if (self = weak.lock(); self) self->latest_ = *result;
    end();
}

} // namespace orvane
