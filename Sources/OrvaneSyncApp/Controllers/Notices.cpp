#include "OrvaneSyncApp/Controllers/Notices.h"

#include <algorithm>
#include <cassert>
#include <exception>
#include <utility>

namespace orvane {

Notices::Notices(std::shared_ptr<platform::MainThread> mainThread, const SyncGroupList& clips)
    : mainThread_(std::move(mainThread)), clips_(clips) {}

void Notices::assertOnMainThread() const { assert(mainThread_->isCurrent()); }

platform::Subscription Notices::onChange(std::function<void(const ImportChange&)> callback) {
    assertOnMainThread();
    return listeners_.add(std::move(callback));
}

void Notices::notify(ImportField field) {
    if (field == ImportField::smartAudio) smartAudioClips_.reset();
    give(field);
}

void Notices::notifySmartAudio(const std::vector<UUID>& clips) {
    if (smartAudioClips_) smartAudioClips_->insert(smartAudioClips_->end(), clips.begin(), clips.end());
    give(ImportField::smartAudio);
}

void Notices::give(ImportField field) {
    assertOnMainThread();
    if (changesUnderWay_ == 0) return callListeners(field);
    if (std::ranges::find(heldBack_, field) == heldBack_.end()) heldBack_.push_back(field);
}

void Notices::callListeners(ImportField field) {
    ImportChange change{field};
    if (field == ImportField::syncGroups) {
        change.clips = clips_;
        change.clipsBefore = std::exchange(clipsNoticed_, clips_);
    }
    if (field == ImportField::smartAudio)
        change.smartAudioClips = std::exchange(smartAudioClips_, std::vector<UUID>());
    listeners_.notify(change);
}

void Notices::together(const std::function<void()>& change) {
    assertOnMainThread();
    ++changesUnderWay_;
    std::exception_ptr raised;
    try {
        change();
    } catch (...) {
        raised = std::current_exception();
    }
    if (--changesUnderWay_ == 0)
        for (const ImportField field : std::exchange(heldBack_, {})) give(field);
    if (raised) std::rethrow_exception(raised);
}

} // namespace orvane
