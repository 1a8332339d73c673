#include "OrvaneSyncApp/Controllers/TimelineController.h"

#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Matching/ClipRate.h"
#include "OrvaneSyncCore/Services/Takes/ClipSound.h"
#include "OrvaneSyncCore/Services/Takes/ReadFailed.h"
#include "OrvaneSyncCore/Services/Takes/TakeDecisions.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformReduction.h"
#include "Platform/OnQueue.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <thread>
#include <utility>

namespace orvane {

namespace {

/// The search as work for a queue. A file that can't be read has no clap.
auto clapSearch(ClapDetector::Search search) {
    return [search = std::move(search)](const std::stop_token& stop) -> std::optional<double> {
        try {
            return ClapDetector::detectClapPoint(search, stop);
        } catch (const std::exception&) {
            return std::nullopt;
        }
    };
}

std::size_t machineThreads() { return std::max(std::thread::hardware_concurrency(), 1U); }

} // namespace

TimelineController::TimelineController(OpenWork& work, ClipEditing& clips)
    : work_(work), clips_(clips),
      waveform_(WaveformState::create(work.environment.mainThread, work.environment.waveformCache)),
      listening_(platform::SerialQueue::create("timeline")) {}

double TimelineController::timelineFrameRate(const SyncGroup& group) const {
    const double chosen = work_.environment.settings->get(settings::targetFrameRate);
    return ClipRates(work_.syncGroups(), chosen).of(group.video);
}

void TimelineController::show(const UUID& groupID) {
    work_.notices.assertOnMainThread();
    zoom_ = zoomOf(groupID);
    if (shown_ != groupID) {
        shown_ = groupID;
        scrolling_ = {};
        drag_ = {};
        waveform_->reset();
        waveformSound_.reset();
        wantsWaveform_ = false;
    }
    if (wantsWaveform_ && waveformSound_ != ClipSound(*work_.syncGroups().find(groupID)).take) loadWaveform();
}

TimelineZoomState TimelineController::zoomOf(const UUID& groupID) const {
    const SyncGroup* group = work_.syncGroups().find(groupID);
    if (group == nullptr) throw GroupNotFound();
    TimelineZoomState zoom = zoom_;
    if (shown_ != groupID) zoom = {.viewportWidth = zoom_.viewportWidth};
    const ClipSound sound(*group);
    zoom.clipDuration = group->video.durationSeconds.value_or(0);
    zoom.sizePaddingForAudio(sound.offsetSeconds, sound.durationSeconds);
    return zoom;
}

platform::Task TimelineController::loadWaveform(bool retries) {
    const SyncGroup* group = shown_ ? work_.syncGroups().find(*shown_) : nullptr;
    if (group == nullptr) return platform::Task::ended();
    std::optional<TakeSound> sound = ClipSound(*group).take;
    const bool isMissing = retries && waveform_->waveform().clipDuration <= 0;
    if (wantsWaveform_ && waveformSound_ == sound && (waveform_->isLoading() || !isMissing))
        return loadingWaveform_;
    if (waveformSound_ != sound) waveform_->reset(); // it is that of another recording
    wantsWaveform_ = true;
    waveformSound_ = sound;
    loadingWaveform_ = sound ? waveform_->load(std::move(*sound), WaveformReduction::reviewBins, true)
                             : platform::Task::ended();
    return loadingWaveform_;
}

platform::Task TimelineController::reduceWaveform(const UUID& groupID, std::size_t bins,
                                                  std::shared_ptr<WaveformResult> result) {
    const SyncGroup* group = work_.syncGroups().find(groupID);
    if (group == nullptr || group->isMOS()) return platform::Task::ended();
    return reduce(work_.weak(this), *ClipSound(*group).take, bins, std::move(result));
}

platform::Task TimelineController::reduce(std::weak_ptr<TimelineController> weak, TakeSound sound,
                                          std::size_t bins, std::shared_ptr<WaveformResult> result) {
    auto self = weak.lock();
    auto reducing =
        platform::onQueue(*self->listening_, self->work_.environment.mainThread,
                          [sound = std::move(sound), bins,
                           cache = self->work_.environment.waveformCache](const std::stop_token& stop) {
                              return reducedWaveform(sound, bins, cache.get(), machineThreads(), stop);
                          });
    self.reset();
    *result = co_await reducing;
}

std::optional<double> TimelineController::setAnchor(const UUID& groupID, double secondsInAudio) {
    const SyncGroup* group = work_.unlockedGroup(groupID);
    const MediaAsset* audio = group == nullptr ? nullptr : group->primaryAudio();
    if (audio == nullptr || !audio->durationSeconds || std::isnan(secondsInAudio)) return std::nullopt;
    const double anchor = withinTake(takeOf(*group, assumedChannels), secondsInAudio);
    work_.withUndo(undoSteps::setAudioAnchor, [&] { clips_.setAudioAnchor(groupID, anchor); });
    return anchor;
}

const SyncGroup* TimelineController::mayGetAnchor(const UUID& groupID) const {
    const SyncGroup* group = work_.unlockedGroup(groupID);
    const bool may = group != nullptr && !group->audioAnchorOffsetInAudioSeconds && !group->isMOS();
    return may ? group : nullptr;
}

platform::Task TimelineController::autoDetectAudioAnchorIfMissing(const UUID& groupID) {
    const SyncGroup* group = mayGetAnchor(groupID);
    if (group == nullptr) return platform::Task::ended();
    return work_.runOnClips(detectAnchor(work_.weak(this), groupID, *ClapDetector::Search::of(*group)));
}

platform::Task TimelineController::locateClapOfLocked(UUID groupID,
                                                      std::shared_ptr<std::optional<double>> clap) const {
    const SyncGroup* group = work_.syncGroups().find(groupID);
    if (group == nullptr || !group->isLocked || group->audioAnchorOffsetInAudioSeconds || group->isMOS())
        co_return;
    auto searching = platform::onQueue(*listening_, work_.environment.mainThread,
                                       clapSearch(*ClapDetector::Search::of(*group)));
    *clap = co_await searching;
}

platform::Task TimelineController::detectAnchor(std::weak_ptr<TimelineController> weak, UUID groupID,
                                                ClapDetector::Search search) {
    auto self = weak.lock();
    auto searching =
        platform::onQueue(*self->listening_, self->work_.environment.mainThread, clapSearch(search));
    self.reset();
    const std::optional<double> clap = co_await searching;
    self = weak.lock();
    if (!self || !clap) co_return;
    const auto mayHave = [&search](const SyncGroup& group) {
        const auto own = ClapDetector::Search::of(group);
        return !group.isLocked && !group.audioAnchorOffsetInAudioSeconds && own && own->isOfSameSound(search);
    };
    const SyncGroup* group = self->work_.syncGroups().find(groupID);
    if (group != nullptr && mayHave(*group))
        self->work_.editWithSteps(groupID, mayHave,
                                  [&](SyncGroup& own) { own.audioAnchorOffsetInAudioSeconds = clap; });
}

void TimelineController::adjustOffset(const UUID& groupID, double deltaSeconds) {
    work_.withUndo(undoSteps::adjustAudioOffset, [&] { clips_.adjustAudioOffset(groupID, deltaSeconds); });
}

void TimelineController::nudgeByFrames(const UUID& groupID, int frames) {
    if (const SyncGroup* group = work_.syncGroups().find(groupID))
        adjustOffset(groupID, frames / timelineFrameRate(*group));
}

platform::Task TimelineController::dragAudio(const UUID& groupID, double points, DragModifiers modifiers) {
    if (work_.unlockedGroup(groupID) == nullptr) return platform::Task::ended();
    return drag(work_.weak(this), groupID, points, modifiers);
}

platform::Task TimelineController::drag(std::weak_ptr<TimelineController> weak, UUID groupID, double points,
                                        DragModifiers modifiers) {
    std::vector<double> onsetMarkers;
    if (modifiers.shift && !modifiers.command) {
        const auto waveform = std::make_shared<WaveformResult>();
        const auto reducing = weak.lock()->reduceWaveform(groupID, WaveformReduction::reviewBins, waveform);
        try {
            co_await reducing;
        } catch (const ReadFailed&) {
            // Without a waveform, the sound moves by whole frames.
        }
        onsetMarkers = onsetMarkersOf(*waveform);
    }
    const auto self = weak.lock();
    const SyncGroup* group = self ? self->work_.unlockedGroup(groupID) : nullptr;
    AudioDrag whole;
    if (group != nullptr) self->move(whole, *group, points, modifiers, onsetMarkers);
}

void TimelineController::handleContainerDrag(double translation, DragModifiers modifiers) {
    const SyncGroup* group = shown_ ? work_.unlockedGroup(*shown_) : nullptr;
    if (group != nullptr) move(drag_, *group, translation, modifiers, waveform_->waveform().onsetMarkers);
}

void TimelineController::move(AudioDrag& drag, const SyncGroup& group, double translation,
                              DragModifiers modifiers, const std::vector<double>& onsetMarkers) {
    AudioDrag::Timeline timeline{.pixelsPerSecond = zoomOf(group.id).pixelsPerSecond(),
                                 .frameRate = timelineFrameRate(group)};
    if (group.audioAnchorOffsetInAudioSeconds)
        timeline.anchorSeconds =
            ClipSound(group).primaryStartSeconds + *group.audioAnchorOffsetInAudioSeconds;
    timeline.onsetMarkers = onsetMarkers;
    const auto change = drag.move(translation, modifiers, timeline);
    if (!change) return;
    const UUID id = group.id; // a copy, because the change replaces the clip
    try {
        adjustOffset(id, *change);
    } catch (const OutOfRange&) {
        drag.refuse(*change);
        throw;
    }
}

std::optional<SiblingSuggestion> TimelineController::siblingSuggestion(const UUID& groupID) const {
    const SyncGroup* group = work_.syncGroups().find(groupID);
    if (group == nullptr) return std::nullopt;
    const platform::SettingsStore& store = *work_.environment.settings;
    return activeSiblingSuggestion(*group, work_.syncGroups(), store.get(settings::clipNamingSource),
                                   store.get(settings::customNamingPattern), timelineFrameRate(*group),
                                   dismissedKeys_);
}

void TimelineController::applySiblingSuggestion(const UUID& groupID) {
    const auto suggestion = siblingSuggestion(groupID);
    if (!suggestion) return;
    const double own = work_.syncGroups().find(groupID)->manualAudioOffsetSeconds;
    adjustOffset(groupID, suggestion->offsetSeconds - own);
}

void TimelineController::dismissSiblingSuggestion(const UUID& groupID) {
    if (auto suggestion = siblingSuggestion(groupID))
        dismissedKeys_.insert(std::move(suggestion->dismissKey));
}

} // namespace orvane
