#pragma once

#include "OrvaneSyncApp/Controllers/AtmoController.h"
#include "OrvaneSyncApp/Controllers/CalibrationController.h"
#include "OrvaneSyncApp/Controllers/ClipEditing.h"
#include "OrvaneSyncApp/Controllers/ExportController.h"
#include "OrvaneSyncApp/Controllers/ImportDependencies.h"
#include "OrvaneSyncApp/Controllers/LockitController.h"
#include "OrvaneSyncApp/Controllers/ModelManager.h"
#include "OrvaneSyncApp/Controllers/OpenWork.h"
#include "OrvaneSyncApp/Controllers/ProjectController.h"
#include "OrvaneSyncApp/Controllers/RecordingEditing.h"
#include "OrvaneSyncApp/Controllers/ReportController.h"
#include "OrvaneSyncApp/Controllers/ScanController.h"
#include "OrvaneSyncApp/Controllers/SlateController.h"
#include "OrvaneSyncApp/Controllers/SmartAudioController.h"
#include "OrvaneSyncApp/Controllers/SoundComparison.h"
#include "OrvaneSyncApp/Controllers/StoredWork.h"
#include "OrvaneSyncApp/Controllers/TimelineController.h"
#include "OrvaneSyncApp/Controllers/TrackEditing.h"
#include "OrvaneSyncApp/Controllers/WorkDoubts.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace orvane {

/// The single owner of the open work: its state, and one controller for each topic. The command line,
/// JSON-RPC and the desktop app are front ends of it.
///
/// Lives on the interface thread and asserts so; long work runs on other threads and reports back. Held by a
/// shared pointer, because that work holds a weak one. The destructor stops what runs and waits for it no
/// longer than SerialQueue says.
class ImportController {
  public:
    using Dependencies = ImportDependencies;
    static std::shared_ptr<ImportController> create(Dependencies dependencies);
    ~ImportController();

    const OpenWork& work() const { return work_; }
    /// Calls back on the interface thread after every change, once the change is complete.
    platform::Subscription onChange(std::function<void(const ImportChange&)> callback);

    ScanController& scan() { return scan_; }
    const ScanController& scan() const { return scan_; }
    ClipEditing& clips() { return clips_; }
    const ClipEditing& clips() const { return clips_; }
    RecordingEditing& recordings() { return recordings_; }
    const RecordingEditing& recordings() const { return recordings_; }
    TrackEditing& tracks() { return tracks_; }
    SmartAudioController& smartAudio() { return smartAudio_; }
    const SmartAudioController& smartAudio() const { return smartAudio_; }
    SlateController& slates() { return slates_; }
    const SlateController& slates() const { return slates_; }
    AtmoController& atmo() { return atmo_; }
    const AtmoController& atmo() const { return atmo_; }
    CalibrationController& calibration() { return calibration_; }
    const CalibrationController& calibration() const { return calibration_; }
    ModelManager& models() { return models_; }
    const ModelManager& models() const { return models_; }
    TimelineController& timeline() { return timeline_; }
    ReportController& reports() { return reports_; }
    const ReportController& reports() const { return reports_; }
    LockitController& lockit() { return lockit_; }
    const LockitController& lockit() const { return lockit_; }
    ProjectController& project() { return project_; }
    const ProjectController& project() const { return project_; }
    const ExportController& exporting() const { return export_; }
    /// Why clips may not have the right sound; see `WorkDoubts::latest`.
    const SyncDoubts& doubts() const { return doubts_.latest(); }
    const WorkDoubts& derivedDoubts() const { return doubts_; }
    /// See `WorkDoubts::listen`.
    platform::Task listenForDoubts() { return doubts_.listen(); }
    SoundComparison& soundComparison() { return comparison_; }
    const SoundComparison& soundComparison() const { return comparison_; }

    /// Runs a change of clips that the user can undo as one step. A step holds the clips, and which
    /// recordings are wild tracks; undoing it keeps the names and approvals of the wild tracks. A change that
    /// makes no difference is no step.
    void withUndo(const UndoStep& step, const std::function<void()>& mutation);
    /// See `OpenWork::changeSetting`.
    template <class T>
    void changeSetting(const UndoStep& step, const platform::Setting<T>& setting,
                       const std::type_identity_t<T>& value) {
        work_.changeSetting(step, setting, value);
    }
    /// For a change that continues, such as by a held key: the next change belongs to the same step.
    void continueUndo(const UndoStep& step) { work_.continueUndo(step); }
    /// The user selected another clip: the next change begins a step.
    void endUndoStep() { work_.endUndoStep(); }
    /// Does nothing if there is no step. Results of Smart Audio for the clips are discarded too.
    void undo();
    void redo();

    /// Runs an operation on the work; it is stopped when the work is closed.
    platform::Task run(platform::Task operation) { return work_.running.add(std::move(operation)); }
    /// Back to the empty state, with no undo steps. Whatever runs is stopped and changes nothing.
    void reset();
    /// As `reset`, but notifies only when the new work is complete.
    void openStoredWork(StoredWork work);

  private:
    explicit ImportController(Dependencies dependencies);

    OpenWork work_;
    SmartAudioController smartAudio_;
    ReportController reports_;
    LockitController lockit_;
    ScanController scan_;
    ProjectController project_;
    ClipEditing clips_;
    RecordingEditing recordings_;
    TrackEditing tracks_;
    AtmoController atmo_;
    CalibrationController calibration_;
    ModelManager models_;
    TimelineController timeline_;
    SlateController slates_;
    ExportController export_;
    WorkDoubts doubts_;
    SoundComparison comparison_;
};

} // namespace orvane
