#include "OrvaneSyncApp/Controllers/WorkDoubts.h"

#include "OrvaneSyncCore/Models/SyncGroupDecisions.h"
#include "OrvaneSyncCore/Services/Diagnosis/CureTrial.h"
#include "OrvaneSyncCore/Services/Matching/MatchRules.h"
#include "OrvaneSyncCore/Services/Naming/ResultsList.h"
#include "Platform/Files.h"
#include "Platform/OnQueue.h"
#include "Platform/Stop.h"
#include "Timecode/TimecodeFrameRate.h"

#include <algorithm>
#include <cmath>
#include <unordered_set>
#include <utility>

namespace orvane {

namespace {

/// Whether the offset has frames beyond whole seconds, at the rate of most clips.
bool hasFrames(double seconds, const SyncGroupList& groups) {
    const TimecodeFrameRate rate = rateOfMostClips(groups);
    const auto frames = std::llround(seconds * timecodeRate::frameRateForRealTimeCalculation(rate));
    return frames % timecodeRate::maxFrames(rate) != 0;
}

/// The number of clips with a recording for which `isOne` is true.
template <class IsOne>
std::size_t clipsWith(const SyncGroupList& groups, const IsOne& isOne) {
    return static_cast<std::size_t>(std::ranges::count_if(groups, [&](const SyncGroup& group) {
        return std::ranges::any_of(group.audioMatches, isOne, &AudioMatch::id);
    }));
}

bool haveMicrophones(const SyncGroupList& groups) {
    return std::ranges::any_of(
        groups, [](const SyncGroup& group) { return group.video.channelCount.value_or(0) > 0; });
}

std::unordered_map<UUID, std::string> whyUnmatched(const DoubtSource& source, const std::stop_token& stop) {
    std::unordered_map<UUID, std::string> result;
    UnmatchedReasons reasons = source.unmatchedReasons();
    for (const SyncGroup& group : filtered(source.files.groups, FilterMode::issues)) {
        platform::throwIfStopped(stop);
        result.emplace(group.id, reasons.ofClip(group));
    }
    return result;
}

} // namespace

WorkDoubts::WorkDoubts(OpenWork& work, const ScanController& scan, const SmartAudioController& smartAudio)
    : work_(work), scan_(scan), smartAudio_(smartAudio), latest_(std::make_shared<const SyncDoubts>()),
      whyUnmatched_(std::make_shared<const Reasons>()), queue_(platform::SerialQueue::create("doubts")) {}

DoubtSource WorkDoubts::source() const {
    return {{work_.syncGroups(), work_.sharedWildTracks(), scan_.scanResult()},
            work_.matchRules(),
            DoubtSettings::of(*work_.environment.settings),
            smartAudio_.state().results,
            heard_,
            work_.folders()};
}

WorkDoubts::Basis WorkDoubts::basis() const {
    return {work_.doubtInputsRevision(), work_.matchRules(), DoubtSettings::of(*work_.environment.settings)};
}

bool WorkDoubts::isBegun() const {
    return begunBy_ == basis() && begunOf_.isSame(work_.syncGroups(), haveSameDoubtInputs);
}

const SyncDoubts& WorkDoubts::latest() const {
    derive();
    // For clips of other work, the earlier doubts do not apply.
    static const SyncDoubts none;
    return work_.syncGroups().empty() ? none : *latest_;
}

const std::string& WorkDoubts::whyUnmatched(const UUID& groupID) const {
    derive();
    static const std::string none;
    const auto found = whyUnmatched_->find(groupID);
    return found == whyUnmatched_->end() ? none : found->second;
}

std::shared_ptr<const SyncDoubts> WorkDoubts::ifCurrent() const {
    work_.notices.assertOnMainThread();
    return isBegun() && deriving_->isDone() ? latest_ : nullptr;
}

platform::Task WorkDoubts::derive() const {
    work_.notices.assertOnMainThread();
    if (isBegun()) return *deriving_;
    if (deriving_) deriving_->requestStop();
    begunBy_ = basis();
    begunOf_.set(work_.syncGroups());
    deriving_ = work_.running.add(deriveOnQueue(work_.weak(this), ++begun_));
    return *deriving_;
}

platform::Task WorkDoubts::deriveOnQueue(std::weak_ptr<const WorkDoubts> weak, std::uint64_t number) {
    auto self = weak.lock();
    if (!self) co_return;
    struct Derived {
        std::shared_ptr<const SyncDoubts> doubts;
        std::shared_ptr<const Reasons> reasons;
        bool isOther;
    };
    auto deriving = platform::onQueue(
        *self->queue_, self->work_.environment.mainThread,
        [source = self->source(), before = self->latest_,
         reasonsBefore = self->whyUnmatched_](const std::stop_token& stop) -> Derived {
            const auto doubts =
                std::make_shared<const SyncDoubts>(source.doubts(source.files.fileNames(), stop));
            const auto reasons = std::make_shared<const Reasons>(orvane::whyUnmatched(source, stop));
            const bool isOther = *doubts != *before || *reasons != *reasonsBefore;
            return {isOther ? doubts : before, isOther ? reasons : reasonsBefore, isOther};
        });
    self.reset();
    Derived derived;
    try {
        derived = co_await deriving;
    } catch (...) {
        self = weak.lock();
        if (self && self->begun_ == number) self->begunBy_.reset();
        throw;
    }
    self = weak.lock();
    if (!self || self->begun_ != number) co_return;
    self->latest_ = std::move(derived.doubts);
    self->whyUnmatched_ = std::move(derived.reasons);
    if (!derived.isOther) co_return;
    ++self->revision_;
    self->work_.notify(ImportField::doubts);
}

WorkDoubts::Listened WorkDoubts::cameOf(const HeardSound& heard, std::size_t matched) const {
    std::unordered_set<UUID> suggested, found;
    for (const auto& [key, claim] : heard.claims) {
        suggested.insert(std::get<0>(key));
        if (claim.offsetSeconds) found.insert(std::get<0>(key));
    }
    const auto isHeard = [&](const UUID& match) {
        return heard.lags.contains(match) || heard.elsewhere.contains(match);
    };
    const auto isUnheard = [&](const UUID& match) { return heard.unheard.contains(match); };
    const std::size_t count = clipsWith(work_.syncGroups(), isHeard);
    return {matched,
            count,
            clipsWith(work_.syncGroups(), isUnheard),
            suggested.size(),
            found.size(),
            count > 0 && hasFrames(work_.matchRules().soundOffsetSeconds, work_.syncGroups())};
}

std::size_t WorkDoubts::clipsOf(const std::vector<SoundLag::Pair>& pairs) const {
    std::unordered_set<UUID> matches;
    for (const SoundLag::Pair& pair : pairs) matches.insert(pair.matchID);
    return clipsWith(work_.syncGroups(), [&](const UUID& match) { return matches.contains(match); });
}

platform::Task WorkDoubts::listen() {
    auto pairs = SoundLag::pairsToHear(work_.syncGroups());
    // With a camera's microphone, offsets suggested by timecode can be checked even if no clip has a
    // recording.
    if (pairs.empty() && !haveMicrophones(work_.syncGroups())) {
        listened_ = {};
        return platform::Task::ended();
    }
    if (!listeningQueue_) listeningQueue_ = platform::SerialQueue::create("doubts");
    show(Listening{0, clipsOf(pairs)});
    return work_.runOnClips(listenToPairs(work_.weak(this), std::move(pairs), ++listeningNumber_));
}

void WorkDoubts::show(std::optional<Listening> progress) {
    progress_ = progress;
    work_.notify(ImportField::progress);
}

platform::Task WorkDoubts::listenToPairs(std::weak_ptr<WorkDoubts> weak, std::vector<SoundLag::Pair> pairs,
                                         std::uint64_t number) {
    auto self = weak.lock();
    const std::size_t matched = self->clipsOf(pairs);
    // At most thirty calls, so each one is worth a notice.
    auto progress = [weak, number, count = pairs.size(), total = matched,
                     mainThread = self->work_.environment.mainThread](std::size_t pairsDone) {
        mainThread->post([weak, number, total, done = pairsDone * total / count] {
            const auto own = weak.lock();
            if (own && own->progress_ && own->listeningNumber_ == number) own->show(Listening{done, total});
        });
    };
    auto hearing = platform::onQueue(*self->listeningQueue_, self->work_.environment.mainThread,
                                     [source = self->source(), pairs = std::move(pairs),
                                      progress = std::move(progress)](const std::stop_token& stop) mutable {
                                         return source.listen(std::move(pairs), stop, progress);
                                     });
    self.reset();
    const auto ended = [&] {
        self = weak.lock();
        if (self && self->listeningNumber_ == number) self->show(std::nullopt);
    };
    HeardSound heard;
    try {
        heard = co_await hearing;
    } catch (...) {
        ended();
        throw;
    }
    ended();
    if (!self) co_return;
    self->listened_ = self->cameOf(heard, matched);
    self->heard_ = std::make_shared<const HeardSound>(std::move(heard));
    self->begunBy_.reset();
    self->work_.notify(ImportField::doubts); // views that show doubts ask for them again
}

} // namespace orvane
