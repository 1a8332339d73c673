#pragma once

#include "OrvaneSyncApp/Controllers/ProjectFileState.h"
#include "OrvaneSyncApp/Controllers/SmartAudioState.h"
#include "OrvaneSyncApp/Controllers/UndoStack.h"
#include "OrvaneSyncCore/Models/ALEFile.h"
#include "OrvaneSyncCore/Models/FilePaths.h"
#include "OrvaneSyncCore/Models/ScanModels.h"
#include "OrvaneSyncCore/Models/SmartAudioKinds.h"
#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Models/WildTrack.h"
#include "OrvaneSyncCore/Services/Export/FCPXMLExporter.h"
#include "OrvaneSyncCore/Services/Ingest/ALEParser.h"
#include "OrvaneSyncCore/Services/Ingest/FileDiscoveryService.h"
#include "OrvaneSyncCore/Services/Ingest/MediaProbeService.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"
#include "OrvaneSyncCore/Services/Metadata/MetadataMerger.h"
#include "OrvaneSyncCore/Services/Naming/BatchRenamer.h"
#include "OrvaneSyncCore/Services/Persistence/ProjectService.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioRouter.h"
#include "Platform/Listeners.h"
#include "Platform/MainThread.h"
#include "Platform/SettingsStore.h"
#include "Platform/Task.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

namespace orvane {

/// What of the open work has changed.
enum class ImportField : std::uint8_t {
    videoFolderURL,
    audioFolderURL,
    scanState,
    progress,
    discoveryResult,
    scanResult,
    syncGroups,
    wildTracks,
    report,
    smartAudio,
    undoState,
    project
};

/// An operation named a clip that is not in the list.
class GroupNotFound : public std::runtime_error {
  public:
    static constexpr int code = 404;
    GroupNotFound() : std::runtime_error("Group not found") {}
};

/// The one owner of the open work: the folders, the scan, the clips and what the editor decides about them.
/// The command line, the JSON-RPC face and the desktop shell are faces of it.
///
/// Lives on the interface thread and asserts so; long work runs elsewhere and comes back. Held by a shared
/// pointer, as that work holds it weakly.
class ImportController : public std::enable_shared_from_this<ImportController> {
  public:
    struct Dependencies {
        std::shared_ptr<platform::MainThread> mainThread;
        std::shared_ptr<platform::SettingsStore> settings;
        /// Null: probe results are neither looked up nor kept.
        std::shared_ptr<ProbeCache> probeCache;
        std::shared_ptr<const platform::Clock> clock = platform::systemClock();
    };
    static std::shared_ptr<ImportController> create(Dependencies dependencies);
    ~ImportController();

    // The state. Each getter is observable.

    const std::optional<FileURL>& videoFolderURL() const { return videoFolderURL_; }
    const std::optional<FileURL>& audioFolderURL() const { return audioFolderURL_; }
    ScanState scanState() const { return scanState_; }
    const ScanProgress& progress() const { return progress_; }
    /// What the last scan found, and what it read from that.
    const std::optional<DiscoveryResult>& discoveryResult() const { return discoveryResult_; }
    const std::optional<ScanResult>& scanResult() const { return scanResult_; }
    const SyncGroupList& syncGroups() const { return syncGroups_; }
    /// Audio that no video claims, room tone included.
    const std::vector<WildTrack>& wildTracks() const { return wildTracks_; }
    /// The camera or sound report that is loaded, and where it lies; `report` tells of a change of these
    /// four.
    const std::optional<ALEFile>& aleFile() const { return aleFile_; }
    const std::optional<FileURL>& aleFileURL() const { return aleFileURL_; }
    /// Why the last report could not be loaded, with the file's name; absent when it was.
    const std::optional<std::string>& aleImportError() const { return aleImportError_; }
    /// The last message of a report merge; absent without a report.
    const std::optional<std::string>& aleMatchStatus() const { return aleMatchStatus_; }
    const SmartAudioState& smartAudio() const { return smartAudio_; }

    /// Calls back after every change, on the interface thread, once the change is whole.
    platform::Subscription onChange(std::function<void(ImportField)> callback);

    // The scan.

    void setVideoFolderURL(std::optional<FileURL> folder);
    void setAudioFolderURL(std::optional<FileURL> folder);
    /// At least one folder is set.
    bool canScan() const { return videoFolderURL_ || audioFolderURL_; }
    /// From the folders to clips and wild tracks; replaces all clips. Files that cannot be read stay in the
    /// work with what is known of them. Never fails. Done when the clips stand; Smart Audio starts after that
    /// by itself.
    /// A second call while a scan runs waits for that scan.
    platform::Task startScan();
    /// Back to the empty state. A scan that runs ends without a trace.
    void reset();

    // Reports and imported metadata. Each clearing opens its own undo step; with nothing to clear, there is
    // none.

    /// Reads a report and lays it over the clips; with no clips yet, the next scan does. A failure is told by
    /// `aleImportError`, and forgets an earlier report.
    void loadALE(const FileURL& url);
    void clearALEMetadata(UUID groupID);
    void clearLockitMetadata(UUID groupID);
    void clearALEMetadataForAllClips();
    void clearLockitMetadataForAllClips();
    /// Clips with metadata of that kind.
    int aleMetadataClipCount() const;
    int lockitMetadataClipCount() const;
    ALEMatchStrategy aleMatchStrategyFromDefaults() const;
    /// How many clips got a row; with a hint where they are so few that the strategy may be wrong.
    static std::string aleMatchStatusMessage(const MetadataMerger::MergeResult& result,
                                             const ALEMatchStrategy& strategy);

    // The project file (ImportController+Project.cpp).

    const ProjectFileState& project() const { return project_; }
    /// Also keeps what an opened project says of clips that were not found. Throws OutputRefused, FileError
    /// or ProjectError; the old file then stands.
    void saveProject(const FileURL& url, OutputPermission permission = {});
    /// What the open work was read from: folders, media, the report and the project. No output may lie there,
    /// but a project is saved to the place that it was opened from.
    RunInputs inputs() const;
    /// Scans the project's folders and lays its edits over the clips. Where a folder is not there, no scan
    /// runs, the clips stay as they were, and the edits wait for the next scan. The task ends with a
    /// FileError or ProjectError when the file can't be opened; then nothing has changed.
    platform::Task loadProject(FileURL url);

    // Counts over the clips.

    int matchedCount() const;   ///< settled clips, without audio too
    int unmatchedCount() const; ///< ambiguous and unmatched ones
    int syncClipCount() const;  ///< settled clips with audio
    int mosCount() const;       ///< settled clips without audio
    /// Multicam clips that an export would build.
    int projectedMulticamCount() const;

    /// The name of every clip in Final Cut, by group, by the naming settings.
    std::map<UUID, std::string> displayNames() const;
    /// What to call the files of the clips and wild tracks. Valid until these change.
    const FileNames& fileNames() const;

    // Taking back (ImportController+Undo.cpp).

    /// Runs a change of clips that the user can take back as one step. Steps hold the clips alone: what else
    /// a change does, to wild tracks above all, stays when it is taken back.
    void withUndo(const UndoStep& step, const std::function<void()>& mutation);
    /// Nothing when there is no step. What Smart Audio knows of the clips is forgotten with it.
    void undo();
    void redo();
    UndoState undoState() const { return undoStack_.state(); }
    void clearUndo();
    /// There are no clips because the editor took the last one out, and not because nothing is open or found.
    bool isEmptiedByEdit() const { return isEmptiedByEdit_; }

    /// Work as it was stored: what stands in place of everything that was open before.
    struct StoredWork {
        std::optional<FileURL> videoFolderURL;
        std::optional<FileURL> audioFolderURL;
        SyncGroupList syncGroups;
    };
    /// As `reset`, but told when the new work stands, and with nothing to take back.
    void openStoredWork(StoredWork work);

    // The editor's decisions (ImportController+Edit*.cpp). Each operation finds its clip by id and does
    // nothing without it, nor with a number that is not finite. None opens an undo step: its caller does,
    // with the step of that name in UndoSteps.h. "Unless locked": a locked clip stays as it is.

    void adjustAudioOffset(UUID groupID, double deltaSeconds);
    /// Absent: no anchor.
    void setAudioAnchor(UUID groupID, std::optional<double> secondsInAudio);
    void resetAudioOffset(UUID groupID);
    /// Locking records offset and anchors as they are; unlocking forgets the record.
    void toggleLocked(UUID groupID);
    /// Every clip with the base name of this one.
    void lockAllInCluster(UUID groupID, GroupNaming::Source source,
                          const std::optional<std::string>& customPattern);
    void toggleApproved(UUID groupID);
    void toggleMOS(UUID groupID); ///< only without audio
    void togglePickup(UUID groupID);
    /// The takes of this scene from this one on, by the recorder's metadata. Clears no flag.
    void markScenePickupFromHere(UUID groupID);
    void toggleExcludedFromExport(UUID groupID);
    void toggleExcludedFromMulticam(UUID groupID);
    void setManualClipName(UUID groupID, std::string_view name); ///< a blank one is none
    void setSyncMethod(UUID groupID, SyncMethod method);
    void setGenerateNativeMOS(UUID groupID, bool enabled);
    void setGenerateProjectRateClip(UUID groupID, bool enabled);
    /// Unless locked. Absent: back to what the file tells, its project rate too.
    void setManualSensorFrameRate(UUID groupID, std::optional<double> fps);
    /// In seconds of clip time, in either order; overrides below it make room. Under 0.1 s: nothing. The task
    /// is that of `reanalyseIfKnown`, here and for the choice of tracks.
    platform::Task addBlockOverride(UUID groupID, double startSeconds, double endSeconds, int trackIndex);
    platform::Task removeBlockOverride(UUID groupID, UUID overrideID);
    void setMasterGain(UUID groupID, double gainDB, bool automatic);
    /// Back to the gain that follows the measured loudness.
    void resetMasterGain(UUID groupID);

    /// Unless locked: adds the audio behind the others and takes it from the wild tracks. Audio that an
    /// ambiguous clip has already is thereby confirmed.
    void attachAudioToGroup(UUID groupID, MediaAsset audio);
    /// Reads the chosen file and attaches it, in an undo step of its own.
    platform::Task chooseAndAttachAudio(UUID groupID, FileURL file);
    void removeAudioMatch(UUID groupID, UUID matchID); ///< unless locked
    void confirmAmbiguousMatch(UUID groupID);          ///< unless locked
    void removeVideoFromSync(UUID groupID);            ///< unless locked
    /// Match anew against the pool, whatever was locked; manual decisions stay.
    void resyncClip(UUID groupID);
    void resyncAllClips();
    /// Manual decisions about sound, sync and approval go, the matches stay.
    void resetClipToAutoSync(UUID groupID);
    /// Overrides and excluded tracks stay. Cannot be taken back. The task ends when all clips that had been
    /// analysed have been analysed again.
    platform::Task resetAllClipsToAutoSync();

    /// Writes the new names as one undo step of its own; none when no clip gets a name.
    void applyBatchRename(const BatchRenamer& renamer);
    void clearAllManualNames();

    void renameWildTrack(UUID id, std::string_view name);
    void toggleWildTrackApproved(UUID id);

    /// The audio of the scan; without one that of the clips and wild tracks. In the order of the paths.
    std::vector<MediaAsset> availableAudioPool() const;
    /// One of the pool; null when it is not in it. Valid until the clips change.
    const MediaAsset* audioInPool(const UUID& id) const;
    /// The pool without wild tracks and the clip's own audio, in the order of a file browser.
    std::vector<MediaAsset> rawFilesAvailableToAttach(UUID excludingGroupID) const;
    /// The stored names of the clips with this audio, ascending.
    std::vector<std::string> clipNames(UUID usingAudioID) const;
    /// How the attach menu lists a file, such as "a.wav  ·  also on 2 clips".
    std::string rawFilesMenuLabel(const MediaAsset& audio) const;
    /// The most frequent project rate of the other clips, frames per second; of equals the first in the list.
    double inferredProjectFrameRate(UUID excluding) const;

    // Smart Audio. An analysis reads the first recording of a clip once, keeps the verdict in `smartAudio`
    // and switches on the tracks of its blocks, unless the editor chose tracks by hand. It never fails.

    /// Analyses all settled clips that have sound, one after the other. `off` forgets all results.
    platform::Task runSmartAudioAnalysis(SmartAudioMode mode, bool forceOverwriteManualTracks);
    /// Analyses one clip, whatever its status, in the stored mode (`standard` for `off`), and measures its
    /// loudness and master gain.
    platform::Task runSmartAudioForGroup(const UUID& groupID, bool forceOverwriteManualTracks);
    /// Analyses a clip again that was analysed before, with the editor's choice of tracks kept: for every
    /// change that the verdict depends on. The task ends with the analysis that takes the change in, which
    /// may be one that ran before.
    platform::Task reanalyseIfKnown(const UUID& groupID);
    /// Whether a scan starts an analysis by itself where the setting `smartAudioMode` was written. On at
    /// first; for a face that runs the analysis on terms of its own.
    void setAnalysesAfterScan(bool doesSo) { analysesAfterScan_ = doesSo; }
    /// Waits for the analysis that the last scan started by itself, if it did.
    platform::Task waitForAnalysisAfterScan() const;

    // The editor's choice of tracks; undo steps as for the other decisions.

    /// The channel's activation box: switches one track of the export on or off, starting from the tracks
    /// that are heard without a choice by hand.
    platform::Task toggleTrackActive(const UUID& groupID, int trackIndex);
    platform::Task soloTrackActive(const UUID& groupID, int trackIndex);
    /// The channel's box that lets the analysis use it.
    platform::Task toggleAlgorithmInclusion(const UUID& groupID, int trackIndex);
    platform::Task soloAlgorithmInclusion(const UUID& groupID, int trackIndex);

    // The export.

    struct ExportOptions {
        std::optional<std::string> eventName; ///< absent: the setting
        std::optional<bool> generateMulticam; ///< absent: the setting
        std::string metadataPrefix;
    };
    /// The settings of an export as the export sheet puts them together.
    ExportSettings exportSettings(const ExportOptions& options) const;
    /// All settled clips and the wild tracks as one document. Throws ExportError or FCPXMLError.
    ExportResult exportFCPXML(const ExportSettings& settings) const;
    /// One clip alone, without multicam. Throws also when there is no such group.
    ExportResult exportSingleClip(const UUID& groupID, ExportSettings settings) const;

  private:
    explicit ImportController(Dependencies dependencies);

    /// The one way to change an observable field.
    template <class Value>
    void set(Value& field, std::type_identity_t<Value> value, ImportField name) {
        assertOnMainThread();
        field = std::move(value);
        notify(name);
    }
    void notify(ImportField field);
    void assertOnMainThread() const;

    // ImportController+Scan.cpp: the stages of a scan, in their order.
    static platform::Task scan(std::weak_ptr<ImportController> weak, std::uint64_t scanNumber);
    static std::shared_ptr<ImportController> stillScanning(const std::weak_ptr<ImportController>& weak,
                                                           std::uint64_t scanNumber);
    std::function<void(int, int)> progressReport(std::uint64_t scanNumber, std::string phase, int before,
                                                 int total);
    void adoptMatches(SyncGroupList groups, const std::vector<MediaAsset>& audioAssets);
    // ImportController+Reports.cpp
    void mergeLoadedReport();
    void clearMetadata(const UndoStep& step, const std::function<bool(SyncGroupList&)>& clear);
    // ImportController+Project.cpp
    static platform::Task openProject(std::weak_ptr<ImportController> weak, FileURL url);
    RunInputs inputsOfScan() const;
    void abandonScan();
    void applyProjectEdits();
    void layProjectOverClips();
    static AudioMatch matchByTimecode(const MediaAsset& video, const MediaAsset& audio);
    void layEditsOverClipsThatStayed();
    // ImportController+SmartAudio.cpp
    struct AnalysisRun;
    static platform::Task analyseAll(std::weak_ptr<ImportController> weak, std::shared_ptr<AnalysisRun> run);
    enum class Loudness : std::uint8_t { leave, measure };
    static platform::Task analyseEach(std::weak_ptr<ImportController> weak, SyncGroupList groups,
                                      std::shared_ptr<AnalysisRun> run, Loudness loudness);
    platform::Task analyseOne(const UUID& groupID, std::shared_ptr<AnalysisRun> run);
    static platform::Task analyseClip(std::weak_ptr<ImportController> weak, UUID groupID,
                                      std::shared_ptr<AnalysisRun> run);
    static platform::Task measureLoudness(std::weak_ptr<ImportController> weak, UUID groupID,
                                          std::shared_ptr<AnalysisRun> run);
    static platform::Task renderMixdown(std::weak_ptr<ImportController> weak, UUID groupID);
    std::shared_ptr<AnalysisRun> newRun(SmartAudioMode mode, bool forceOverwriteManualTracks) const;
    std::shared_ptr<AnalysisRun> newRunForOneClip(bool forceOverwriteManualTracks) const;
    SmartAudioRequest analysisRequest(const SyncGroup& group, const AnalysisRun& run) const;
    std::function<void(double)> analysisReport(const std::shared_ptr<AnalysisRun>& run, double effort);
    void nextClip(AnalysisRun& run, const SyncGroup& group);
    const SyncGroup* stillAsked(const UUID& groupID, const AnalysisRun& run) const;
    std::uint64_t timesForgotten(const UUID& groupID) const;
    void adoptVerdict(const UUID& groupID, SmartAudioResult result, bool forceOverwriteManualTracks);
    void analysisBegan(const std::shared_ptr<AnalysisRun>& run);
    void analysisEnded(const std::shared_ptr<AnalysisRun>& run);
    void showAnalysisProgress(const AnalysisRun& run, SmartAudioProgress progress);
    void startAnalysisAfterScan();
    /// The results belong to clips that are no more.
    void forgetSmartAudio();
    /// dB; by the settings and the calibration.
    double automaticMasterGainDB(double measuredLUFS) const;
    // ImportController+Tracks.cpp
    platform::Task editTracks(UUID groupID, const std::function<void(SyncGroup&)>& change);
    std::set<int> visibleActiveTracks(const SyncGroup& group) const;

    // ImportController+Undo.cpp
    using UndoTravel = bool (UndoStack<SyncGroupList>::*)(SyncGroupList&, std::chrono::nanoseconds);
    void travel(UndoTravel direction);
    /// Holds notices back until the change is whole, and then gives each of them once.
    void tellAtEnd(const std::function<void()>& change);
    // ImportController+Edit*.cpp
    bool edit(UUID groupID, const std::function<void(SyncGroup&)>& change);
    void editWildTrack(UUID id, const std::function<void(WildTrack&)>& change);
    const SyncGroup* unlockedGroup(UUID groupID) const;
    static platform::Task attachFile(std::weak_ptr<ImportController> weak, UUID groupID, FileURL file);
    void clipsLetGoOf(const std::vector<AudioMatch>& released);
    bool hasScannedAudio() const { return scanResult_ && !scanResult_->audioAssets.empty(); }
    std::vector<const MediaAsset*> audioPool() const;
    const std::vector<std::size_t>& clipsUsing(const UUID& audioID) const;
    // ImportController+EditSmartAudio.cpp: what an edit means to that which Smart Audio knows.
    void removeSmartAudioCaches(UUID groupID);
    void removeRenderedAudio(UUID groupID);
    void invalidateCachesAfterUndo();
    platform::Task reanalyseAll();

    const std::shared_ptr<platform::MainThread> mainThread_;
    const std::shared_ptr<platform::SettingsStore> settings_;
    const std::shared_ptr<const platform::Clock> clock_;
    platform::Listeners<ImportField> listeners_;
    int changesUnderWay_ = 0;
    std::vector<ImportField> untold_; ///< what they have changed so far

    std::optional<FileURL> videoFolderURL_;
    std::optional<FileURL> audioFolderURL_;
    ScanState scanState_ = ScanState::idle;
    ScanProgress progress_;
    std::optional<DiscoveryResult> discoveryResult_;
    std::optional<ScanResult> scanResult_;
    SyncGroupList syncGroups_;
    /// Where in `syncGroups_` each audio is used. Absent until somebody asks, and after every change.
    mutable std::optional<std::unordered_map<UUID, std::vector<std::size_t>>> clipsByAudio_;
    std::vector<WildTrack> wildTracks_;
    /// Absent until somebody asks, and after every change of the files.
    mutable std::optional<FileNames> fileNames_;
    std::optional<FileURL> aleFileURL_;
    std::optional<ALEFile> aleFile_;
    std::optional<std::string> aleImportError_;
    UndoStack<SyncGroupList> undoStack_;
    bool isEmptiedByEdit_ = false;
    bool isEmptinessRedone_ = false; ///< redoing to a list without clips is an edit
    ProjectFileState project_;
    std::optional<std::string> aleMatchStatus_;
    SmartAudioState smartAudio_;
    std::vector<std::shared_ptr<AnalysisRun>> analyses_;      ///< those under way, by when they began
    std::map<UUID, std::shared_ptr<AnalysisRun>> reanalyses_; ///< the latest of each clip, if not yet judged
    /// How often the results were thrown away, of all clips and of each.
    std::uint64_t timesAllForgotten_ = 0;
    std::unordered_map<UUID, std::uint64_t> timesForgotten_;
    bool analysesAfterScan_ = true;
    std::optional<platform::Task> analysisAfterScan_;
    /// Tells a scan that another scan or a reset has taken its place.
    std::uint64_t scanNumber_ = 0;
    std::optional<platform::Task> runningScan_;

    const FileDiscoveryService discoveryService_{};
    const std::shared_ptr<MediaProbeService> probeService_;
    const SyncEngine syncEngine_{};
    const ProjectService projectService_{};
    const ALEParser aleParser_{};
    const MetadataMerger metadataMerger_{};
    // Last, as what runs on their queues is waited for before anything else goes: one operation of the
    // services at a time, one analysis, and one measurement of loudness.
    const std::unique_ptr<platform::SerialQueue> serviceQueue_;
    const std::unique_ptr<SmartAudioRouter> smartAudioRouter_;
    const std::unique_ptr<platform::SerialQueue> loudnessQueue_;
};

} // namespace orvane
