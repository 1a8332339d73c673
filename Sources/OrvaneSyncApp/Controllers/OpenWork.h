#pragma once

#include "OrvaneSyncApp/Controllers/Notices.h"
#include "OrvaneSyncApp/Controllers/UndoStep.h"
#include "OrvaneSyncApp/Controllers/WorkErrors.h"
#include "OrvaneSyncApp/Controllers/WorkState.h"
#include "Platform/Task.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace orvane {

struct ScanOutcome;

/// The open work as its controllers change it, each change notifying, with the steps to take back. Interface
/// thread.
class OpenWork : public WorkState {
  public:
    explicit OpenWork(Environment theEnvironment);
    ~OpenWork();

    Notices notices;
    /// Operations under way; they stop with the work that they belong to.
    platform::RunningTasks running;
    /// For reports, projects and exports, one after the other.
    const std::unique_ptr<platform::SerialQueue> documents;

    void notify(ImportField field);
    void setVideoFolderURL(std::optional<FileURL> folder);
    void setAudioFolderURL(std::optional<FileURL> folder);
    void setScanScope(ScanScope scope);
    /// Holds from the next matching of all clips on.
    void setSourceCorrections(SourceCorrections corrections);
    /// After all clips were matched again.
    void setMatchedBy(MatchedBy matchedBy);
    /// Steps hold them with the clips.
    void setProjectEntries(std::shared_ptr<const ProjectEntries> entries) {
        projectEntries_ = std::move(entries);
    }
    /// False when there is no such clip.
    bool edit(UUID groupID, const std::function<void(SyncGroup&)>& change);
    /// The same for what was found of the clip and is no decision: taking back a step does not lose it.
    /// `mayHave`: whether a step's state of the clip gets the change too.
    bool editWithSteps(UUID groupID, const std::function<bool(const SyncGroup&)>& mayHave,
                       const std::function<void(SyncGroup&)>& change);
    /// Notifies where there is such a clip.
    void editWhere(const std::function<bool(const SyncGroup&)>& test,
                   const std::function<void(SyncGroup&)>& change);
    void changeClips(const std::function<void(SyncGroupList&)>& change);
    void changeWildTracks(const std::function<void(std::vector<WildTrack>&)>& change);
    /// Both at once, made elsewhere.
    void setClips(SyncGroupList groups, std::shared_ptr<const std::vector<WildTrack>> wildTracks);
    /// Clips and wild tracks of other work: that there are none is then no edit, and nothing of what was open
    /// can be taken back. `matchedBy`: by which the clips were matched; without days, by those of the
    /// setting.
    void openOtherWork(SyncGroupList groups, std::vector<WildTrack> wildTracks,
                       const SourceCorrections& matchedBy);
    /// What a scan has made, of the same work or of other work. Where the work before holds decisions, or was
    /// matched by other corrections, the scan is a step. Wild tracks keep their names and approvals.
    enum class ScanOf { sameWork, otherWork };
    void adoptScan(SyncGroupList groups, std::vector<WildTrack> wildTracks, MatchedBy matchedBy,
                   std::shared_ptr<const ScanOutcome> scan, ScanOf of);

    /// Runs a change of clips as one step to take back. A change that makes no difference is no step, and
    /// leaves clips and steps as they were. Within another change it is a part of that one's step.
    void withUndo(const UndoStep& step, const std::function<void()>& mutation);
    /// Stores the value of a setting on which every clip of the document depends, as a step to take back.
    /// Nothing where it has the value already.
    void changeSetting(const UndoStep& step, std::string_view key, platform::JSON value);
    void continueUndo(const UndoStep& step);
    /// Somebody turned to another clip: the next change is a step of its own.
    void endUndoStep();
    void undo();
    void redo();
    void clearUndo();
    UndoState undoState() const;
    /// Whether somebody may have decided something of the clips since a scan made them.
    bool mayHoldDecisions() const;
    /// For a change that is made in pieces while the editor goes on working, and becomes one step at its end,
    /// on top of those that came meanwhile: where the steps stand when it begins;
    std::uint64_t undoMark() const;
    /// whether they were all forgotten since, as those of other work;
    bool isUndoClearedSince(std::uint64_t mark) const;
    /// the clips of the steps that came since, oldest first;
    std::vector<SyncGroupList> clipsOfStepsSince(std::uint64_t mark);
    /// and the end: these clips of theirs, and the present ones, without the change.
    void addStepSince(std::uint64_t mark, const UndoStep& step, std::vector<SyncGroupList> clipsOfSteps,
                      SyncGroupList clipsBefore);
    /// Called within every undo and redo that changed the clips, with those before it: for what was derived
    /// from them.
    std::function<void(const SyncGroupList& clipsBefore)> whenTakenBack;
    /// Called within an undo or redo that leads to the clips of another scan; null: to clips of none.
    std::function<void(const std::shared_ptr<const ScanOutcome>&)> whenScanTakenBack;

    /// How an operation that waits holds its controller: weakly, and while it is locked with all of the work.
    template <class Controller>
    std::weak_ptr<Controller> weak(Controller* controller) const {
        return std::shared_ptr<Controller>(owner.lock(), controller);
    }
    std::weak_ptr<const void> owner;

  private:
    struct Step;  ///< what a step holds
    struct Steps; ///< those to take back, and those taken back

    Step present() const;
    bool differsFrom(const Step& before) const;
    void addStep(const UndoStep& step, Step before);
    void applyStep(bool isUndo);
    WildTracks wildTracksOf(const Step& target, const SyncGroupList& clipsBefore) const;

    std::shared_ptr<const ScanOutcome> scan_; ///< that made the clips; null: none
    const std::unique_ptr<Steps> steps_;
    /// Since the clips were made, or they come from where somebody may have.
    bool isEdited_ = false;
    bool isWithinStep_ = false;      ///< a change of `withUndo` runs
    bool isEmptinessRedone_ = false; ///< redoing to a list without clips is an edit
};

} // namespace orvane
