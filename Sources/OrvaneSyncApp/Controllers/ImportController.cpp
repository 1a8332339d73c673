#include "OrvaneSyncApp/Controllers/ImportController.h"

#include <unordered_set>
#include <utility>

namespace orvane {

std::shared_ptr<ImportController> ImportController::create(Dependencies dependencies) {
    std::shared_ptr<ImportController> controller(new ImportController(std::move(dependencies)));
    controller->work_.owner = controller;
    return controller;
}

ImportController::ImportController(Dependencies dependencies)
    : work_({std::move(dependencies.mainThread), std::move(dependencies.settings),
             std::move(dependencies.clock), std::move(dependencies.waveformCache),
             std::move(dependencies.renderedAudio), std::move(dependencies.stems),
             std::move(dependencies.analyses)}),
      smartAudio_(work_), reports_(work_), lockit_(work_),
      scan_(work_, smartAudio_, reports_, std::move(dependencies.probeCache)),
      project_(work_, scan_, reports_), clips_(work_, smartAudio_), recordings_(work_, scan_, smartAudio_),
      tracks_(work_, smartAudio_), atmo_(work_), calibration_(work_), models_(work_),
      timeline_(work_, clips_), slates_(work_, smartAudio_.caches(), std::move(dependencies.slateDetector)),
      export_(work_, smartAudio_), doubts_(work_, scan_, smartAudio_), comparison_(work_) {
    work_.whenTakenBack = [this](const SyncGroupList& before) { smartAudio_.emptyAfterUndo(before); };
}

ImportController::~ImportController() { work_.running.requestStop(); }

platform::Subscription ImportController::onChange(std::function<void(const ImportChange&)> callback) {
    return work_.notices.onChange(std::move(callback));
}

void ImportController::withUndo(const UndoStep& step, const std::function<void()>& mutation) {
    work_.withUndo(step, mutation);
}

void ImportController::undo() { work_.undo(); }

void ImportController::redo() { work_.redo(); }

void ImportController::reset() {
    work_.running.requestStop();
    work_.notices.together([&] {
        work_.setVideoFolderURL(std::nullopt);
        work_.setAudioFolderURL(std::nullopt);
        work_.setScanScope({});
        work_.setSourceCorrections({});
        scan_.clear();
        project_.clear();
        reports_.clear();
        work_.openOtherWork({}, {}, {});
        smartAudio_.caches().removeAll();
    });
}

void ImportController::openStoredWork(StoredWork work) {
    std::unordered_set<UUID> used;
    for (const SyncGroup& group : work.syncGroups)
        for (const AudioMatch& match : group.audioMatches) used.insert(match.audio->id);
    std::erase_if(work.wildTracks, [&](const WildTrack& track) { return used.contains(track.id); });
    work_.notices.together([&] {
        smartAudio_.caches().leaveClips();
        reset();
        work_.setVideoFolderURL(std::move(work.videoFolderURL));
        work_.setAudioFolderURL(std::move(work.audioFolderURL));
        work_.setScanScope(std::move(work.scanScope));
        work_.setSourceCorrections(work.sourceCorrections);
        work_.openOtherWork(std::move(work.syncGroups), std::move(work.wildTracks),
                            work.matchedBy.value_or(work.sourceCorrections));
        smartAudio_.restoreAfterUndo();
    });
    smartAudio_.recallStored();
}

} // namespace orvane
