#include "OrvaneSyncApp/Controllers/SessionAutosave.h"

namespace orvane {

void SessionAutosave::watch(const std::shared_ptr<ImportController>& controller) {
    controller_ = controller;
    observation_ = controller->onChange([this](ImportField field) {
        if (field == ImportField::syncGroups || field == ImportField::wildTracks ||
            field == ImportField::videoFolderURL || field == ImportField::audioFolderURL ||
            field == ImportField::scanScope || field == ImportField::sourceCorrections)
            schedule();
    });
}

void SessionAutosave::schedule() {
    if (isRestoring_ || isProjectOpening_ || std::exchange(isScheduled_, true)) return;
    mainThread_->post([weak = weak_from_this()] {
        if (const auto self = weak.lock()) self->saveScheduled();
    });
}

void SessionAutosave::saveScheduled() {
    if (isScheduled_) save();
}

void SessionAutosave::save() {
    const bool isChanged = std::exchange(isScheduled_, false);
    const auto work = controller();
    if (work && !isProjectOpening_) save_(*work, isChanged);
}

} // namespace orvane
