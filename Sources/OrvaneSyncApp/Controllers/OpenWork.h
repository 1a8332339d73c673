#pragma once

#include "OrvaneSyncApp/Controllers/DerivedFromClips.h"
#include "OrvaneSyncApp/Controllers/Notices.h"
#include "OrvaneSyncApp/Controllers/UndoStack.h"
#include "OrvaneSyncApp/Controllers/WorkFiles.h"
#include "OrvaneSyncCore/Models/ExportKinds.h"
#include "OrvaneSyncCore/Models/FilePaths.h"
#include "OrvaneSyncCore/Models/ScanScope.h"
#include "OrvaneSyncCore/Models/SourceCorrections.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Models/WildTrack.h"
#include "OrvaneSyncCore/Services/Matching/MatchRules.h"
#include "Platform/SettingsStore.h"
#include "Platform/Task.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

namespace orvane {

/// An operation named a clip that is not in the list.
class GroupNotFound : public std::runtime_error {
  public:
    static constexpr int code = 404;
    GroupNotFound() : std::runtime_error("Group not found") {}
};

/// A decision was refused, as it is about something that does not exist or is out of its range. Says what is
/// allowed.
class OutOfRange : public std::invalid_argument {
  public:
    using std::invalid_argument::invalid_argument;
};

struct ScanOutcome;
struct ProjectEntries;
class WaveformCache;
class RenderedAudioStore;
class StemCache;

/// By what clips were matched.
struct MatchedBy {
    SourceCorrections corrections = {.days = MatchingDays::automatic}; ///< with their days
    MatchRules rules;

    /// Throws CorrectionError where the frame of the sound offset does not exist at the rate.
    static MatchedBy of(const SourceCorrections& withDays, TimecodeFrameRate rateOfClips);
};

/// The state that the controllers of the open work share: folders, clips, wild tracks, and the steps to take
/// back. The controllers change it, each change notifying; everybody else reads it. Interface thread.
class OpenWork {
  public:
    struct Environment {
        std::shared_ptr<platform::MainThread> mainThread;
        std::shared_ptr<platform::SettingsStore> settings;
        std::shared_ptr<const platform::Clock> clock;
        std::shared_ptr<WaveformCache> waveformCache = nullptr; ///< null: none are kept
        /// Null: nothing is rendered.
        std::shared_ptr<const RenderedAudioStore> renderedAudio = nullptr;
        std::shared_ptr<StemCache> stems = nullptr; ///< null: analyses go without stems
    };
    explicit OpenWork(Environment theEnvironment);

    const Environment environment;
    Notices notices;
    /// Operations under way; they stop with the work that they belong to.
    platform::RunningTasks running;
    /// For reports, projects and exports, one after the other.
    const std::unique_ptr<platform::SerialQueue> documents;

    const std::optional<FileURL>& videoFolderURL() const { return videoFolderURL_; }
    const std::optional<FileURL>& audioFolderURL() const { return audioFolderURL_; }
    const ScanScope& scanScope() const { return scanScope_; }
    /// All that a scan reads, each once: first the video folder, then the audio folder, then the others.
    std::vector<FileURL> folders() const;
    /// What the next matching of all clips goes by, and the days where the work has some of its own.
    const SourceCorrections& sourceCorrections() const { return sourceCorrections_; }
    /// The same with the days: those of the work, unless the setting was changed since it has them.
    SourceCorrections nextCorrections() const;
    /// By what the clips that there are were matched, whatever corrections and settings say by now.
    const MatchRules& matchRules() const { return matchedBy_.rules; }
    /// What a file has to keep of the next corrections, and of those by which the clips were matched where
    /// they are others. The standard days are left out.
    SourceCorrections keptCorrections() const;
    std::optional<SourceCorrections> keptMatchedBy() const;
    /// What an opened project says that stands on no clip; null: nothing.
    const std::shared_ptr<const ProjectEntries>& projectEntries() const { return projectEntries_; }
    const SyncGroupList& syncGroups() const { return syncGroups_; }
    /// Audio that no video claims, room tone included.
    const std::vector<WildTrack>& wildTracks() const { return *wildTracks_; }
    /// The same for who keeps them: never changed, and another one after every change.
    const std::shared_ptr<const std::vector<WildTrack>>& sharedWildTracks() const { return wildTracks_; }
    /// There are no clips because the editor took the last one out, and not because nothing is open or found.
    bool isEmptiedByEdit() const { return isEmptiedByEdit_; }
    /// Differs after every change but those of the clips, of what is derived from them, of the steps to take
    /// back, and of a progress.
    std::uint64_t revisionBesidesClips() const { return revisionBesidesClips_; }
    UndoState undoState() const { return undoStack_.state(); }

    int matchedCount() const { return syncClipCount() + mosCount(); } ///< settled clips, without audio too
    int unmatchedCount() const;                                       ///< ambiguous and unmatched ones
    int syncClipCount() const { return counts().withSound; }          ///< settled clips with audio
    int mosCount() const { return counts().withoutSound; }            ///< settled clips without audio
    /// Of the clips that are settled.
    struct Counts {
        int withSound = 0, withoutSound = 0;

        static Counts of(const SyncGroupList& groups); ///< any thread
    };
    /// The name of every clip in Final Cut, by group, by the naming settings. Valid until these or the clips
    /// change.
    const DisplayNames& displayNames() const;
    /// The same for who keeps them; null where nobody has asked for them since they may have changed.
    std::shared_ptr<const DisplayNames> displayNamesIfMade() const;
    /// What to call the files of the clips and wild tracks. Valid until these change.
    const FileNames& fileNames() const;
    /// Where in the list of clips the audio is used, ascending. Valid until the clips change.
    const std::vector<std::size_t>& clipsUsing(const UUID& audioID) const;
    /// Null when there is no such clip, or it is locked.
    const SyncGroup* unlockedGroup(const UUID& groupID) const;

    // For the controllers.

    void notify(ImportField field);
    void setVideoFolderURL(std::optional<FileURL> folder);
    void setAudioFolderURL(std::optional<FileURL> folder);
    void setScanScope(ScanScope scope);
    /// Holds from the next matching of all clips on.
    void setSourceCorrections(SourceCorrections corrections);
    /// After all clips were matched anew.
    void setMatchedBy(MatchedBy matchedBy);
    /// Steps hold them with the clips.
    void setProjectEntries(std::shared_ptr<const ProjectEntries> entries) {
        projectEntries_ = std::move(entries);
    }
    /// False when there is no such clip.
    bool edit(UUID groupID, const std::function<void(SyncGroup&)>& change);
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
    /// What a scan has made, of the same work or of other work. Where the work before holds decisions, the
    /// scan is a step. Wild tracks keep their names and approvals.
    enum class ScanOf { sameWork, otherWork };
    void adoptScan(SyncGroupList groups, std::vector<WildTrack> wildTracks, MatchedBy matchedBy,
                   std::shared_ptr<const ScanOutcome> scan, ScanOf of);

    /// Runs a change of clips as one step to take back. A change that makes no difference is no step, and
    /// leaves clips and steps as they were.
    void withUndo(const UndoStep& step, const std::function<void()>& mutation);
    void continueUndo(const UndoStep& step) { undoStack_.continueLastStep(step, environment.clock->now()); }
    void undo() { travel(&UndoStack<State>::undo); }
    void redo() { travel(&UndoStack<State>::redo); }
    void clearUndo();
    /// For a change that is made in pieces while the editor goes on working, and becomes one step at its end,
    /// on top of those that came meanwhile: where the steps stand when it begins;
    std::uint64_t undoMark() const { return undoStack_.mark(); }
    /// whether they were all forgotten since, as those of other work;
    bool isUndoClearedSince(std::uint64_t mark) const { return undoStack_.isClearedSince(mark); }
    /// the clips of the steps that came since, oldest first;
    std::vector<SyncGroupList> clipsOfStepsSince(std::uint64_t mark);
    /// and the end: these clips of theirs, and the present ones, without the change.
    void addStepSince(std::uint64_t mark, const UndoStep& step, std::vector<SyncGroupList> clipsOfSteps,
                      SyncGroupList clipsBefore);
    /// Called within every undo and redo that changed the clips: for what was derived from them.
    std::function<void()> whenTakenBack;
    /// Called within an undo or redo that leads to the clips of another scan; null: to clips of none.
    std::function<void(const std::shared_ptr<const ScanOutcome>&)> whenScanTakenBack;

    /// How an operation that waits holds its controller: weakly, and while it is locked with all of the work.
    template <class Controller>
    std::weak_ptr<Controller> weak(Controller* controller) const {
        return std::shared_ptr<Controller>(owner.lock(), controller);
    }
    std::weak_ptr<const void> owner;

  private:
    using WildTracks = std::shared_ptr<const std::vector<WildTrack>>;
    /// What a step holds.
    struct State {
        SyncGroupList groups;
        WildTracks wildTracks;
        std::shared_ptr<const ScanOutcome> scan; ///< which made the clips; null: none
        MatchedBy matchedBy;
        std::shared_ptr<const ProjectEntries> projectEntries;
    };
    using UndoTravel = bool (UndoStack<State>::*)(State&);

    State state() const { return {syncGroups_, wildTracks_, scan_, matchedBy_, projectEntries_}; }
    bool differsFrom(const State& before) const;
    void travel(UndoTravel direction);
    WildTracks wildTracksOf(const State& target, const SyncGroupList& clipsBefore) const;
    bool mayHoldDecisions() const;
    const Counts& counts() const;

    std::optional<FileURL> videoFolderURL_;
    std::optional<FileURL> audioFolderURL_;
    ScanScope scanScope_;
    SourceCorrections sourceCorrections_;
    MatchingDays daysOfSetting_ = MatchingDays::automatic; ///< when the corrections were taken
    MatchedBy matchedBy_;
    std::shared_ptr<const ProjectEntries> projectEntries_;
    std::uint64_t revisionBesidesClips_ = 0;
    SyncGroupList syncGroups_;
    WildTracks wildTracks_ = std::make_shared<const std::vector<WildTrack>>();
    std::shared_ptr<const ScanOutcome> scan_;
    UndoStack<State> undoStack_;
    /// Since the clips were made, or they come from where somebody may have.
    bool isEdited_ = false;
    bool isEmptiedByEdit_ = false;
    bool isEmptinessRedone_ = false; ///< redoing to a list without clips is an edit
    // Absent until somebody asks, and after every change of the clips.
    mutable std::optional<std::unordered_map<UUID, std::vector<std::size_t>>> clipsByAudio_;
    mutable DerivedFromClips<Counts> counts_;
    mutable DerivedFromClips<FileNames> fileNames_;
    mutable WildTracks wildTracksInNames_; ///< in `fileNames_`
    mutable DerivedFromClips<DisplayNames> displayNames_;
    mutable std::optional<NamingRules> namedBy_; ///< `displayNames_`
};

} // namespace orvane
