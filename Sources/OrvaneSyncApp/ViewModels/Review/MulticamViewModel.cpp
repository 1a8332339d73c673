#include "OrvaneSyncApp/ViewModels/Review/MulticamViewModel.h"

#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Naming/SyncClustering.h"
#include "Platform/Completion.h"

#include <exception>
#include <utility>

namespace orvane {

std::shared_ptr<MulticamViewModel> MulticamViewModel::create(std::shared_ptr<ImportController> controller,
                                                             ClusterEngineBag::MakeEngine makeEngine) {
    std::shared_ptr<MulticamViewModel> model(
        new MulticamViewModel(std::move(controller), std::move(makeEngine)));
    model->following_ = model->controller_->onChange([weak = std::weak_ptr(model)](ImportField field) {
        const auto self = weak.lock();
        if (self && field == ImportField::syncGroups) self->follow();
    });
    return model;
}

std::vector<UUID> MulticamViewModel::camerasFor(const OpenWork& work, const std::vector<UUID>& chosen) {
    if (chosen.size() != 1) return chosen;
    const SyncGroup* clip = work.syncGroups().find(chosen.front());
    if (clip == nullptr) return {};
    const platform::SettingsStore& settings = *work.environment.settings;
    std::vector<UUID> cameras;
    for (const SyncGroup& camera :
         SyncClustering::siblings(*clip, work.syncGroups(), settings.get(settings::clipNamingSource),
                                  settings.get(settings::customNamingPattern)))
        cameras.push_back(camera.id);
    return cameras;
}

platform::Task MulticamViewModel::load(std::vector<UUID> groupIDs) {
    for (const UUID& id : groupIDs)
        if (controller_->work().syncGroups().find(id) == nullptr) throw GroupNotFound();
    chosen_ = groupIDs;
    return open(std::move(groupIDs));
}

platform::Task MulticamViewModel::open(std::vector<UUID> members) {
    std::vector<SyncGroup> clips;
    for (const UUID& id : members) clips.push_back(*controller_->work().syncGroups().find(id));
    members_ = std::move(members);
    scrolling_ = {};
    return loading_ = bag_.load(clips);
}

platform::Task MulticamViewModel::loaded() { return loaded(weak_from_this()); }

platform::Task MulticamViewModel::loaded(std::weak_ptr<MulticamViewModel> weak) {
    for (auto self = weak.lock(); self && !self->loading_.isDone(); self = weak.lock()) {
        // If a caller is stopped, the loading continues.
        const auto ended =
            std::make_shared<platform::Completion>(self->controller_->work().environment.mainThread);
        self->loading_.whenDone([ended](const std::exception_ptr&) { ended->end(); });
        self.reset();
        const platform::Task waiting = ended->task();
        co_await waiting;
    }
}

platform::Task MulticamViewModel::findClaps() { return findClaps(weak_from_this()); }

platform::Task MulticamViewModel::findClaps(std::weak_ptr<MulticamViewModel> weak) {
    auto self = weak.lock();
    const std::vector<UUID> members = self->members_;
    using OfLocked = std::shared_ptr<std::optional<double>>; // a locked clip is not changed
    std::vector<OfLocked> ofLocked;
    std::vector<platform::Task> searches;
    for (const UUID& id : members) {
        searches.push_back(self->controller_->timeline().autoDetectAudioAnchorIfMissing(id));
        ofLocked.push_back(std::make_shared<std::optional<double>>());
        searches.push_back(self->controller_->timeline().locateClapOfLocked(id, ofLocked.back()));
    }
    self.reset();
    for (const platform::Task& search : searches) co_await search;
    const platform::Task loading = loaded(weak);
    co_await loading;
    self = weak.lock();
    if (!self || self->members_ != members) co_return;
    std::vector<SyncGroup> clips;
    for (std::size_t i = 0; i < members.size(); ++i) {
        clips.push_back(*self->controller_->work().syncGroups().find(members[i]));
        if (*ofLocked[i]) clips.back().audioAnchorOffsetInAudioSeconds = *ofLocked[i];
    }
    self->bag_.goToClaps(clips);
}

void MulticamViewModel::close() {
    chosen_.clear();
    members_.clear();
    bag_.cleanup();
}

/// A member that is removed from the list of clips is removed from the cluster, and returns with its clip;
/// the others are updated from their clips.
void MulticamViewModel::follow() {
    std::vector<UUID> there;
    for (const UUID& id : chosen_)
        if (const SyncGroup* group = controller_->work().syncGroups().find(id)) {
            there.push_back(id);
            bag_.follow(*group);
        }
    if (there == members_) return;
    there.empty() ? close() : void(open(std::move(there)));
}

void MulticamViewModel::step(int frames) {
    bag_.stepAll(frames, controller_->work().environment.settings->get(settings::playbackAudioScrubbing));
}

int MulticamViewModel::scrollFrames(double deltaY, bool hasPreciseDeltas) {
    const int frames = scrolling_.frames(deltaY, hasPreciseDeltas);
    if (frames != 0) step(frames);
    return frames;
}

void MulticamViewModel::handleKeyAction(KeyAction action) {
    switch (action) {
    case KeyAction::playPause:
    case KeyAction::shuttleStop:
        return bag_.togglePlay();
    case KeyAction::stepForward:
    case KeyAction::stepForward5:
    case KeyAction::audioOffsetPlus:
        return step(1);
    case KeyAction::stepBackward:
    case KeyAction::stepBackward5:
    case KeyAction::audioOffsetMinus:
        return step(-1);
    case KeyAction::shuttleForward:
    case KeyAction::slowMoForward:
        return bag_.pressL();
    case KeyAction::shuttleReverse:
    case KeyAction::slowMoReverse:
        return bag_.pressJ();
    case KeyAction::toggleFullscreen:
        if (toggleFullscreen) toggleFullscreen();
        return;
    case KeyAction::nextGroup:
    case KeyAction::prevGroup:
        if (moveInList) moveInList(action);
        return;
    case KeyAction::lockCurrent:
    case KeyAction::toggleApproved:
        if (const auto heard = bag_.audioSourceMemberID(); heard && decideOfClip)
            decideOfClip(action, *heard);
        return;
    case KeyAction::clearLoop: // there is no loop
        return;
    default:
        if (refuse) refuse(action);
    }
}

} // namespace orvane
