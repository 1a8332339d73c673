#include "OrvaneSyncApp/Controllers/SessionStatus.h"

#include "Platform/Log.h"

#include <cassert>
#include <utility>

namespace orvane {

void SessionStatus::assertOnMainThread() const { assert(mainThread_->isCurrent()); }

platform::Subscription SessionStatus::onChange(std::function<void(SessionField)> callback) {
    assertOnMainThread();
    return listeners_.add(std::move(callback));
}

bool SessionStatus::keepsClipsFromElsewhere(const std::vector<FileURL>& folders) const {
    const SessionInfo* current = currentSession();
    return current != nullptr && current->groupCount > 0 && open_.isElsewhere(folders);
}

void SessionStatus::setLastSaveError(std::optional<std::string> failure) {
    if (failure) platform::logError("Session save failed: " + *failure);
    if (failure == lastSaveError_) return;
    lastSaveError_ = std::move(failure);
    notify(SessionField::lastSaveError);
}

void SessionStatus::setProblem(std::optional<std::string> problem) {
    if (problem_ == problem) return;
    problem_ = std::move(problem);
    notify(SessionField::problem);
}

} // namespace orvane
