#include "OrvaneSyncApp/Controllers/WorkDoubts.h"

#include "OrvaneSyncCore/Models/Settings.h"

namespace orvane {

const SyncDoubts& WorkDoubts::now() const {
    const platform::SettingsStore& store = *work_.environment.settings;
    const Basis basis{work_.revision(), store.get(settings::trimMode)};
    if (basis == basis_) return doubts_;
    basis_ = basis;
    const auto pool = recordings_.availableAudioPool();
    doubts_ = SyncDoubts::of({work_.syncGroups(), pool, work_.matchRules(), basis.trimMode,
                              smartAudio_.caches().state.results, work_.fileNames(), &heardLags_});
    return doubts_;
}

platform::Task WorkDoubts::listen() {
    auto pairs = SoundLag::pairsToHear(work_.syncGroups());
    if (pairs.empty()) return platform::Task::ended();
    if (!listening_) listening_ = platform::SerialQueue::create("doubts");
    return work_.running.add(listenToPairs(work_.weak(this), std::move(pairs)));
}

platform::Task WorkDoubts::listenToPairs(std::weak_ptr<WorkDoubts> weak, std::vector<SoundLag::Pair> pairs) {
    auto self = weak.lock();
    auto hearing = platform::onQueue(
        *self->listening_, self->work_.environment.mainThread,
        [pairs = std::move(pairs)](const std::stop_token& stop) { return SoundLag::heard(pairs, stop); });
    self.reset();
    auto lags = co_await hearing;
    self = weak.lock();
    if (!self) co_return;
    self->heardLags_ = std::move(lags);
    self->basis_.reset();
}

} // namespace orvane
