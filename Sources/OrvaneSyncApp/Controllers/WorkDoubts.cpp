#include "OrvaneSyncApp/Controllers/WorkDoubts.h"

#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Models/SyncGroupDecisions.h"

#include <algorithm>

namespace orvane {

namespace {

bool haveSameSound(const SyncGroup& before, const SyncGroup& now) {
    return std::ranges::equal(
        before.audioMatches, now.audioMatches,
        [](const AudioMatch& a, const AudioMatch& b) { return &*a.audio == &*b.audio; });
}

/// Whatever doubts look at, they do not look at names, marks, claps and levels.
bool areDoubtedAlike(const SyncGroup& before, const SyncGroup& now) {
    SyncGroup other = now;
    other.isApproved = before.isApproved;
    other.isPickup = before.isPickup;
    other.manualClipName = before.manualClipName;
    other.audioAnchorOffsetInAudioSeconds = before.audioAnchorOffsetInAudioSeconds;
    other.pictureClapAnchorSeconds = before.pictureClapAnchorSeconds;
    other.syncMethod = before.syncMethod;
    other.manualBlockOverrides = before.manualBlockOverrides;
    other.masterGainDB = before.masterGainDB;
    other.masterGainAuto = before.masterGainAuto;
    other.measuredLUFS = before.measuredLUFS;
    return saySame(before, other);
}

} // namespace

const SyncDoubts& WorkDoubts::now() const {
    const MatchRules& rules = work_.matchRules();
    const TrimMode trimMode = work_.environment.settings->get(settings::trimMode);
    const Basis basis(work_.revisionBesidesClips(), rules.days, rules.soundOffsetSeconds, rules.soundDay,
                      rules.timecodeRate, trimMode);
    if (basis_ != basis) {
        basis_ = basis;
        pool_.reset();
        doubts_.reset();
    }
    const SyncGroupList& clips = work_.syncGroups();
    return doubts_.of(clips, areDoubtedAlike, [&] {
        ++revision_;
        const auto& pool =
            pool_.of(clips, haveSameSound, [this] { return recordings_.availableAudioPool(); });
        return SyncDoubts::of({clips, pool, rules, trimMode, smartAudio_.caches().state.results,
                               work_.fileNames(), &heardLags_});
    });
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
