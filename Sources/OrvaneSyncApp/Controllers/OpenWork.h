#pragma once

#include "OrvaneSyncApp/Controllers/Notices.h"
#include "OrvaneSyncApp/Controllers/UndoStep.h"
#include "OrvaneSyncApp/Controllers/WorkErrors.h"
#include "OrvaneSyncApp/Controllers/WorkState.h"
#include "Platform/Setting.h"
#include "Platform/Task.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

namespace orvane {

struct ScanOutcome;

/// The open work, with the operations by which its controllers change it, and the undo steps. Each change
/// notifies. Interface thread.
class OpenWork : public WorkState {
  public:
    explicit OpenWork(Environment theEnvironment);
    ~OpenWork();

    Notices notices;
    /// Running operations on the work; they are stopped when the work is closed.
    platform::RunningTasks running;
    /// Runs an operation whose result is only of use to the present clips: it also stops when a scan begins
    /// that replaces them.
    platform::Task runOnClips(platform::Task operation) {
        return running.add(runningOnClips_.add(std::move(operation)));
    }
    void stopOnClips() const { runningOnClips_.requestStop(); }
    /// For reports, projects and exports, one at a time.
    const std::unique_ptr<platform::SerialQueue> documents;

    void notify(ImportField field);
    /// See `Notices::notifySmartAudio`.
    void notifySmartAudio(const std::vector<UUID>& clips);
    void setVideoFolderURL(std::optional<FileURL> folder);
    void setAudioFolderURL(std::optional<FileURL> folder);
    void setScanScope(ScanScope scope);
    /// Takes effect with the next matching of all clips.
    void setSourceCorrections(SourceCorrections corrections);
    /// Called after all clips were matched again.
    void setMatchedBy(MatchedBy matchedBy);
    /// Undo steps hold them with the clips.
    void setProjectEntries(std::shared_ptr<const ProjectEntries> entries) {
        projectEntries_ = std::move(entries);
    }
    /// False when there is no such clip.
    bool edit(UUID groupID, const std::function<void(SyncGroup&)>& change);
    /// The same for something found about the clip that is no decision: undoing a step keeps it. `mayHave`:
    /// whether the clip as a step holds it gets the change too.
    bool editWithSteps(UUID groupID, const std::function<bool(const SyncGroup&)>& mayHave,
                       const std::function<void(SyncGroup&)>& change);
    /// Notifies if there is such a clip.
    void editWhere(const std::function<bool(const SyncGroup&)>& test,
                   const std::function<void(SyncGroup&)>& change);
    void changeClips(const std::function<void(SyncGroupList&)>& change);
    void changeWildTracks(const std::function<void(std::vector<WildTrack>&)>& change);
    /// Sets both at once; they were made elsewhere.
    void setClips(SyncGroupList groups, std::shared_ptr<const std::vector<WildTrack>> wildTracks);
    /// Sets the clips and wild tracks of other work: an empty list is then no edit, and all undo steps are
    /// cleared. `matchedBy`: how the clips were matched; if it has no days, those of the setting apply.
    void openOtherWork(SyncGroupList groups, std::vector<WildTrack> wildTracks,
                       const SourceCorrections& matchedBy);
    /// Sets the result of a scan, of the same work or of other work. If the earlier work holds decisions, or
    /// was matched by other corrections, the scan is an undo step. Wild tracks keep their names and
    /// approvals.
    enum class ScanOf { sameWork, otherWork };
    void adoptScan(SyncGroupList groups, std::vector<WildTrack> wildTracks, MatchedBy matchedBy,
                   std::shared_ptr<const ScanOutcome> scan, ScanOf of);

    /// Runs a change of clips as one undo step. A change that makes no difference is no step, and leaves
    /// clips and steps unchanged. Within another change it belongs to that change's step.
    void withUndo(const UndoStep& step, const std::function<void()>& mutation);
    /// Stores the value of a setting that every clip of the document depends on, as an undo step. Does
    /// nothing if the setting has that value.
    template <class T>
    void changeSetting(const UndoStep& step, const platform::Setting<T>& setting,
                       const std::type_identity_t<T>& value) {
        changeSettingTo(step, setting, setting.write(value));
    }
    /// Runs a change of clips that belongs to the last step: undo and redo do both at once.
    void withinLastStep(const std::function<void()>& mutation);
    void continueUndo(const UndoStep& step);
    /// The user selected another clip: the next change is a step of its own.
    void endUndoStep();
    void undo();
    void redo();
    void clearUndo();
    UndoState undoState() const;
    /// Whether the editor may have decided something about the clips since a scan made them.
    bool mayHoldDecisions() const;
    /// For a change that is made in parts while the editor continues to work, and that becomes one step at
    /// its end, after the steps made meanwhile. Returns a mark of the change's beginning.
    std::uint64_t undoMark() const;
    /// Whether all steps were cleared since then, because other work was opened.
    bool isUndoClearedSince(std::uint64_t mark) const;
    /// The clips in the steps added since then, oldest first.
    std::vector<SyncGroupList> clipsOfStepsSince(std::uint64_t mark);
    /// Adds the step at the end of the change: the clips of those steps, and the present clips, without the
    /// change.
    void addStepSince(std::uint64_t mark, const UndoStep& step, std::vector<SyncGroupList> clipsOfSteps,
                      SyncGroupList clipsBefore);
    /// Called within every undo and redo that changed the clips, with the earlier clips: for data that was
    /// derived from them.
    std::function<void(const SyncGroupList& clipsBefore)> whenTakenBack;
    /// Called within an undo or redo to the clips of another scan; null: to clips of no scan.
    std::function<void(const std::shared_ptr<const ScanOutcome>&)> whenScanTakenBack;

    /// How a waiting operation holds its controller: weakly; a lock holds it together with all of the work.
    template <class Controller>
    std::weak_ptr<Controller> weak(Controller* controller) const {
        return std::shared_ptr<Controller>(owner.lock(), controller);
    }
    std::weak_ptr<const void> owner;

  private:
    struct Step;  ///< the contents of a step
    struct Steps; ///< those to undo and those to redo

    Step present() const;
    bool differsFrom(const Step& before) const;
    void noteEdit(const SyncGroupList& before);
    void addStep(const UndoStep& step, Step before);
    void changeSettingTo(const UndoStep& step, const platform::SettingDescription& setting,
                         platform::JSON value);
    void applyStep(bool isUndo);
    WildTracks wildTracksOf(const Step& target, const SyncGroupList& clipsBefore) const;

    platform::RunningTasks runningOnClips_;
    std::shared_ptr<const ScanOutcome> scan_; ///< the scan that made the clips; null: none
    const std::unique_ptr<Steps> steps_;
    /// Clips were edited since they were made, or come from a file in which they may have been.
    bool isEdited_ = false;
    bool isWithinStep_ = false;      ///< a change of `withUndo` runs
    bool isEmptinessRedone_ = false; ///< redoing to a list without clips is an edit
};

} // namespace orvane
