#include "OrvaneSyncApp/ViewModels/Review/ReviewViewModel.h"

#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncApp/Controllers/WorkErrors.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Shortcuts/KeyText.h"
#include "OrvaneSyncCore/Services/Timeline/ClipPlaces.h"
#include "OrvaneSyncCore/Services/Waveform/OnsetDetector.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace orvane {

namespace {

constexpr int clapCheckFrames = 12;          ///< before and after the clap
constexpr double clapCheckWithoutClap = 3.0; ///< seconds

} // namespace

std::shared_ptr<ReviewViewModel> ReviewViewModel::create(std::shared_ptr<ImportController> controller,
                                                         std::shared_ptr<VideoEngine> engine) {
    std::shared_ptr<ReviewViewModel> model(new ReviewViewModel(std::move(controller), std::move(engine)));
    model->following_ = model->controller_->onChange([weak = std::weak_ptr(model)](ImportField field) {
        const auto self = weak.lock();
        if (self && field == ImportField::syncGroups) self->follow();
    });
    return model;
}

ReviewViewModel::ReviewViewModel(std::shared_ptr<ImportController> controller,
                                 std::shared_ptr<VideoEngine> engine)
    : controller_(std::move(controller)), timeline_(controller_->timeline()), engine_(std::move(engine)),
      fullscreen_(engine_, controller_->work().environment.settings) {}

const SyncGroup* ReviewViewModel::group() const {
    return groupID_ ? controller_->work().syncGroups().find(*groupID_) : nullptr;
}

// The clip in view

platform::Task ReviewViewModel::loadGroup(const UUID& groupID) {
    if (!shows(groupID)) controller_->endUndoStep();
    timeline_.show(groupID);
    groupID_ = groupID;
    clapOfLocked_.reset();
    isDraggingAudio_ = false;
    isSearchingClap_ = true;
    changed_.notify();
    return load(weak_from_this(), groupID, ++loads_);
}

platform::Task ReviewViewModel::load(std::weak_ptr<ReviewViewModel> weak, UUID groupID,
                                     std::uint64_t number) {
    auto self = weak.lock();
    const auto clipStillInView = [&]() -> const SyncGroup* {
        self = weak.lock();
        return self && self->loads_ == number ? self->group() : nullptr;
    };
    const SyncGroup* group = self->group();
    const ClipSound sound(*group);
    const MediaAsset& video = group->video;
    const platform::Task opening =
        self->engine_->loadClip(video.url, sound.take, sound.offsetSeconds, self->clapInPicture(),
                                {video.durationSeconds.value_or(0), video.frameRate.value_or(0)});
    // Before the file is open, its timecode is shown at the rate that the scan has found.
    if (const auto rate = video.frameRate)
        self->engine_->setStartTimecode(video.startTimecodeString,
                                        video.timecodeFrameRate.value_or(TimecodeUtils::frameRate(*rate)));
    self.reset();
    co_await opening;
    group = clipStillInView();
    if (group == nullptr) co_return;
    self->engine_->setStartTimecode(group->video.startTimecodeString, group->video.timecodeFrameRate);
    const platform::Task waveform = self->timeline_.loadWaveform(true);
    const platform::Task detecting = self->timeline_.autoDetectAudioAnchorIfMissing(groupID);
    const auto clapOfLocked = std::make_shared<std::optional<double>>();
    const std::optional<UUID> searched =
        group->isMOS() ? std::nullopt : std::optional(group->audioMatches.front().id);
    const platform::Task locating = self->timeline_.locateClapOfLocked(groupID, clapOfLocked);
    self.reset();
    co_await detecting;
    co_await locating;
    group = clipStillInView();
    if (group == nullptr) co_return;
    if (*clapOfLocked && searched) self->clapOfLocked_ = {*searched, **clapOfLocked};
    self->isSearchingClap_ = false;
    self->changed_.notify();
    if (const auto clap = self->clapInPicture()) self->engine_->correctInitialSeek(*clap);
    const platform::Task showing = self->engine_->shown();
    self.reset();
    co_await showing;
    co_await waveform;
}

void ReviewViewModel::close() {
    if (!groupID_) return;
    ++loads_;
    groupID_.reset();
    isDraggingAudio_ = isSearchingClap_ = false;
    fullscreen_.hide();
    engine_->cleanup();
    changed_.notify();
}

void ReviewViewModel::follow() {
    if (!groupID_ || isDraggingAudio_) return;
    const SyncGroup* clip = group();
    if (clip == nullptr) return close();
    ClipSound sound(*clip);
    const double moved = sound.offsetSeconds - engine_->sound().syncOffsetSeconds;
    engine_->setAudio(std::move(sound.take));
    engine_->setSyncOffsetSeconds(sound.offsetSeconds);
    timeline_.show(*groupID_);
    if (moved != 0) stayOnClap(moved);
}

/// If the playhead is on the clap, it stays on it when the sound is moved, also by an undo.
void ReviewViewModel::stayOnClap(double movedSeconds) {
    const auto anchor = clapInSound();
    if (!anchor || !engine_->transport().isLoaded || engine_->transport().isPlaying || engine_->isSkimming())
        return;
    const double clap = *anchor + ClipSound(*group()).primaryOffsetSeconds();
    const PlayheadState& playhead = engine_->playhead();
    if (std::abs(playhead.seconds() - (clap - movedSeconds)) < playhead.frameLength().seconds() / 2)
        engine_->moveTo(clap);
}

// Keys

/// Fits the clip to the width of the viewport.
void ReviewViewModel::fitTimeline() {
    TimelineZoomState& zoom = timeline_.zoom();
    zoom.zoomFit();
    zoom.scrollOffset = std::min(zoom.preRollSeconds * zoom.pixelsPerSecond(), zoom.largestScrollOffset());
    changed_.notify();
}

void ReviewViewModel::handleKeyAction(KeyAction action) {
    ++keys_;
    switch (action) {
    case KeyAction::playPause:
    case KeyAction::shuttleStop:
        return engine_->playPause();
    case KeyAction::shuttleForward:
        return engine_->pressL();
    case KeyAction::shuttleReverse:
        return engine_->pressJ();
    case KeyAction::stepForward:
        return step(1);
    case KeyAction::stepBackward:
        return step(-1);
    case KeyAction::stepForward5:
        return step(5);
    case KeyAction::stepBackward5:
        return step(-5);
    case KeyAction::slowMoForward:
        return engine_->slowMotionScrub(true);
    case KeyAction::slowMoReverse:
        return engine_->slowMotionScrub(false);
    case KeyAction::jumpPrevEdit:
        return jumpToEdit(true);
    case KeyAction::jumpNextEdit:
        return jumpToEdit(false);
    case KeyAction::zoomIn:
        return applyZoom(TimelineZoomState::zoomInFactor);
    case KeyAction::zoomOut:
        return applyZoom(TimelineZoomState::zoomOutFactor);
    case KeyAction::zoomFit:
        return fitTimeline();
    case KeyAction::clapCheck:
        return clapCheck();
    case KeyAction::clearLoop:
        return engine_->clearLoop();
    case KeyAction::toggleFullscreen:
        return fullscreen_.toggleFullscreen();
    case KeyAction::toggleAudioExpand:
        isAudioExpanded_ = !isAudioExpanded_;
        return changed_.notify();
    case KeyAction::nextGroup:
    case KeyAction::prevGroup:
        if (moveInList) moveInList(action);
        return;
    default:
        if (group() != nullptr) decide(action);
    }
}

/// What a key decides about the clip in view.
void ReviewViewModel::decide(KeyAction action) {
    switch (action) {
    case KeyAction::audioOffsetPlus:
    case KeyAction::nudgePeriodPlus:
        return adjustOffset(1);
    case KeyAction::audioOffsetMinus:
    case KeyAction::nudgeCommaMinus:
        return adjustOffset(-1);
    case KeyAction::audioOffsetPlus5:
        return adjustOffset(5);
    case KeyAction::audioOffsetMinus5:
        return adjustOffset(-5);
    case KeyAction::nudgePeriodPlus10:
        return adjustOffset(10);
    case KeyAction::nudgeCommaMinus10:
        return adjustOffset(-10);
    case KeyAction::updateClapPoint:
        if (group()->isMOS() || group()->isLocked) {
            if (sayWhyNot) sayWhyNot(group()->isMOS() ? "The clip has no sound." : clapIsLocked);
            return;
        }
        return setAnchor(*groupID_,
                         engine_->playhead().seconds() - ClipSound(*group()).primaryOffsetSeconds());
    default:
        if (decideOfClip) decideOfClip(action, *groupID_);
    }
}

void ReviewViewModel::step(int frames) {
    engine_->stepFrames(frames,
                        controller_->work().environment.settings->get(settings::playbackAudioScrubbing));
}

void ReviewViewModel::jumpToEdit(bool previous) {
    if (group() == nullptr) return;
    jump_ = timeline_.loadWaveform();
    jump_.whenDone([weak = weak_from_this(), previous, key = keys_](const std::exception_ptr&) {
        const auto self = weak.lock();
        if (self && self->keys_ == key) self->jumpToOnset(previous); // otherwise a later key counts
    });
}

void ReviewViewModel::jumpToOnset(bool previous) {
    const SyncGroup* clip = group();
    if (clip == nullptr) return;
    const std::vector<double>& onsets = timeline_.waveform()->waveform().onsetMarkers;
    const double offset = ClipSound(*clip).offsetSeconds, at = engine_->playhead().seconds() - offset;
    const auto onset = previous ? OnsetDetector::nearestOnsetBefore(at, onsets, OnsetDetector::jumpGapSeconds)
                                : OnsetDetector::nearestOnsetAfter(at, onsets, OnsetDetector::jumpGapSeconds);
    if (onset) engine_->moveTo(ClipPlaces::ofAnchor(*onset, offset, engine_->playhead().clipDuration));
}

void ReviewViewModel::clapCheck() {
    if (engine_->loop().isLooping) return engine_->clearLoop();
    if (group() == nullptr) return;
    const bool isPlayed = canCheckClap();
    if (isPlayed) engine_->setLoopRegion(clapCheckSeconds(), clapCheckFrames);
    if ((!isPlayed || !clapSeconds()) && sayWhyNot) sayWhyNot(whyNoClapLoop(isPlayed));
}

/// Why the clip in view has no loop around its clap, and on the next line what to do. `isPlayed`: a loop is
/// played without a clap.
std::string ReviewViewModel::whyNoClapLoop(bool isPlayed) const {
    const SyncGroup& clip = *group();
    if (!engine_->transport().isLoaded) return "The clip is not loaded.";
    const bool isOutside = clapSeconds().has_value();
    std::string why = isOutside  ? "The clap point is outside of the picture."
                      : isPlayed ? "There is no clap point yet: the loop plays around 3 s."
                                 : "There is no clap point yet.";
    why += '\n';
    if (clip.isMOS())
        why += clip.isLocked ? "⟨lockCurrent⟩ unlocks the clip, then Ctrl+T attaches a recording."
                             : "Ctrl+T attaches a recording.";
    else
        why += clip.isLocked
                   ? "⟨lockCurrent⟩ unlocks the clip, then ⟨updateClapPoint⟩ sets its clap point."
                   : "⟨jumpNextEdit⟩ goes to the next onset, ⟨updateClapPoint⟩ sets the clap point there.";
    return why;
}

std::optional<double> ReviewViewModel::clapInSound() const {
    const SyncGroup* clip = group();
    if (clip == nullptr || clip->isMOS()) return std::nullopt;
    if (clip->audioAnchorOffsetInAudioSeconds) return clip->audioAnchorOffsetInAudioSeconds;
    const bool isOfItsSound = clapOfLocked_ && clip->audioMatches.front().id == clapOfLocked_->recording;
    return isOfItsSound ? std::optional(clapOfLocked_->audioSeconds) : std::nullopt;
}

std::optional<double> ReviewViewModel::clapSeconds() const {
    const SyncGroup* clip = group();
    if (clip == nullptr) return std::nullopt;
    if (clip->pictureClapAnchorSeconds) return clip->pictureClapAnchorSeconds;
    const auto inSound = clapInSound();
    return inSound ? std::optional(*inSound + ClipSound(*clip).primaryOffsetSeconds()) : std::nullopt;
}

std::optional<double> ReviewViewModel::clapInPicture() const {
    const auto clap = clapSeconds();
    if (!clap || *clap < 0) return std::nullopt;
    const auto& length = group()->video.durationSeconds; // the clap must be within the clip
    if (length && *clap >= *length) return std::nullopt;
    return clap;
}

double ReviewViewModel::clapCheckSeconds() const { return clapSeconds().value_or(clapCheckWithoutClap); }

bool ReviewViewModel::canCheckClap() const {
    if (engine_->loop().isLooping) return true;
    if (group() == nullptr || !engine_->transport().isLoaded) return false;
    const PlayheadState& playhead = engine_->playhead();
    const double reach = (playhead.frameLength() * clapCheckFrames).seconds();
    return clapCheckSeconds() + reach > 0 && clapCheckSeconds() - reach < playhead.clipDuration;
}

void ReviewViewModel::applyZoom(double scaleDelta) {
    TimelineZoomState& zoom = timeline_.zoom();
    if (groupID_) zoom.playheadSeconds = engine_->playhead().seconds();
    zoom.applyZoom(scaleDelta);
    changed_.notify();
}

// Position of the sound

void ReviewViewModel::adjustOffset(int byFrames) {
    const SyncGroup* clip = group();
    if (clip == nullptr) return;
    if (clip->isMOS()) {
        const std::string_view why =
            clip->isLocked
                ? "The clip has no sound to move. ⟨lockCurrent⟩ unlocks it, then Ctrl+T attaches a "
                  "recording."
                : "The clip has no sound to move. Ctrl+T attaches a recording.";
        if (sayWhyNot) return sayWhyNot(why);
        throw OutOfRange(withStandardKeys(why));
    }
    nudgeByFrames(*groupID_, byFrames);
}

void ReviewViewModel::nudgeByFrames(const UUID& groupID, int frames) {
    timeline_.nudgeByFrames(groupID, frames);
    if (!shows(groupID) || engine_->transport().isPlaying) return;
    const SyncGroup* clip = group();
    if (clip != nullptr && clip->audioAnchorOffsetInAudioSeconds)
        engine_->moveTo(*clip->audioAnchorOffsetInAudioSeconds + ClipSound(*clip).primaryOffsetSeconds());
}

void ReviewViewModel::setAnchor(const UUID& groupID, double atAudioSeconds) {
    const auto anchor = timeline_.setAnchor(groupID, atAudioSeconds);
    const SyncGroup* clip = anchor && shows(groupID) ? group() : nullptr;
    if (clip != nullptr) engine_->moveTo(*anchor + ClipSound(*clip).primaryOffsetSeconds());
}

void ReviewViewModel::handleWaveformClick(double takeSeconds, ModifierSet modifiers) {
    const SyncGroup* clip = group();
    if (clip == nullptr) return;
    const ClipSound sound(*clip);
    if (modifiers.contains(ModifierSet::command | ModifierSet::option))
        return setAnchor(*groupID_, takeSeconds - sound.primaryStartSeconds);
    if (sound.durationSeconds > 0)
        engine_->moveTo(ClipPlaces::ofClick(takeSeconds, sound.durationSeconds, sound.offsetSeconds));
}

void ReviewViewModel::seekVideoToAnchor() {
    const SyncGroup* clip = group();
    if (clip == nullptr || !clip->audioAnchorOffsetInAudioSeconds) return;
    engine_->moveTo(ClipPlaces::ofAnchor(*clip->audioAnchorOffsetInAudioSeconds,
                                         ClipSound(*clip).primaryOffsetSeconds(),
                                         engine_->playhead().clipDuration));
}

void ReviewViewModel::putClapOnFrame() {
    if (group() == nullptr) return;
    const auto clap = clapInSound();
    if (!clap || group()->isLocked) {
        if (sayWhyNot)
            sayWhyNot(clap ? "Unlock sync to move the sound: ⟨lockCurrent⟩ first."
                           : "There is no clap point to put on the frame. Ctrl+D searches for one.");
        return;
    }
    constexpr double rounding = 0.001; // of a frame
    const double rate = timeline_.timelineFrameRate(*group());
    const double frames =
        (engine_->playhead().seconds() - *clap - ClipSound(*group()).primaryOffsetSeconds()) * rate;
    nudgeByFrames(*groupID_, static_cast<int>(std::ceil(frames - rounding)));
}

void ReviewViewModel::handleSkim(std::optional<double> seconds) {
    seconds ? engine_->skim(*seconds) : engine_->endSkim();
}

void ReviewViewModel::handleContainerDrag(double translation, DragModifiers modifiers) {
    if (!groupID_ || controller_->work().unlockedGroup(*groupID_) == nullptr) return;
    if (!isDraggingAudio_) timeline_.show(*groupID_);
    isDraggingAudio_ = true;
    timeline_.handleContainerDrag(translation, modifiers);
    seekVideoToAnchor();
}

void ReviewViewModel::handleDragEnded() {
    timeline_.handleDragEnded();
    isDraggingAudio_ = false;
    follow();
}

platform::Task ReviewViewModel::dragAudio(const UUID& groupID, double points, DragModifiers modifiers) {
    return drag(weak_from_this(), groupID, timeline_.dragAudio(groupID, points, modifiers));
}

platform::Task ReviewViewModel::drag(std::weak_ptr<ReviewViewModel> weak, UUID groupID,
                                     platform::Task dragging) {
    co_await dragging;
    const auto self = weak.lock();
    if (self && self->shows(groupID) && !self->group()->isLocked) self->seekVideoToAnchor();
}

int ReviewViewModel::scrollFrames(double deltaY, bool hasPreciseDeltas) {
    const int frames = timeline_.scrolling().frames(deltaY, hasPreciseDeltas);
    if (frames != 0) step(frames);
    return frames;
}

} // namespace orvane
