#include "OrvaneSyncApp/Controllers/ImportController.h"

#include <exception>
#include <utility>

namespace orvane {

void ImportController::tellAtEnd(const std::function<void()>& change) {
    assertOnMainThread();
    ++changesUnderWay_;
    std::exception_ptr raised;
    try {
        change();
    } catch (...) {
        raised = std::current_exception();
    }
    if (--changesUnderWay_ == 0)
        for (const ImportField field : std::exchange(untold_, {})) notify(field);
    if (raised) std::rethrow_exception(raised);
}

void ImportController::withUndo(const UndoStep& step, const std::function<void()>& mutation) {
    tellAtEnd([&] {
        if (undoStack_.begin(step, syncGroups_, clock_->now())) notify(ImportField::undoState);
        const bool wasEmpty = syncGroups_.empty();
        mutation();
        if (!wasEmpty) isEmptiedByEdit_ = syncGroups_.empty();
    });
}

void ImportController::undo() { travel(&UndoStack<SyncGroupList>::undo); }

void ImportController::redo() { travel(&UndoStack<SyncGroupList>::redo); }

void ImportController::travel(UndoTravel direction) {
    tellAtEnd([&] {
        const bool wasEmpty = syncGroups_.empty();
        if (!(undoStack_.*direction)(syncGroups_, clock_->now())) return;
        // A list without clips is the editor's where the step forward took them out; before the first step it
        // is that of work that was not there yet.
        if (wasEmpty) isEmptinessRedone_ = isEmptiedByEdit_;
        isEmptiedByEdit_ =
            syncGroups_.empty() && direction == &UndoStack<SyncGroupList>::redo && isEmptinessRedone_;
        syncGroups_.makeIndex();
        notify(ImportField::syncGroups);
        invalidateCachesAfterUndo();
        notify(ImportField::undoState);
    });
}

void ImportController::clearUndo() {
    assertOnMainThread();
    undoStack_.removeAllActions();
    notify(ImportField::undoState);
}

void ImportController::openStoredWork(StoredWork work) {
    tellAtEnd([&] {
        clearUndo();
        reset();
        videoFolderURL_ = std::move(work.videoFolderURL);
        audioFolderURL_ = std::move(work.audioFolderURL);
        syncGroups_ = std::move(work.syncGroups);
        syncGroups_.makeIndex();
    });
}

} // namespace orvane
