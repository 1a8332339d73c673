#pragma once

#include "OrvaneSyncApp/Controllers/SmartAudioState.h"
#include "OrvaneSyncCore/Models/ScanModels.h"
#include "OrvaneSyncCore/Models/SmartAudioKinds.h"
#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Models/WildTrack.h"
#include "OrvaneSyncCore/Services/Export/FCPXMLExporter.h"
#include "OrvaneSyncCore/Services/Ingest/FileDiscoveryService.h"
#include "OrvaneSyncCore/Services/Ingest/MediaProbeService.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioRouter.h"
#include "Platform/MainThread.h"
#include "Platform/SettingsStore.h"
#include "Platform/Task.h"

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
    smartAudio
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

    // Counts over the clips.

    int matchedCount() const;   ///< settled clips, without audio too
    int unmatchedCount() const; ///< ambiguous and unmatched ones
    int syncClipCount() const;  ///< settled clips with audio
    int mosCount() const;       ///< settled clips without audio
    /// Multicam clips that an export would build.
    int projectedMulticamCount() const;

    /// The name of every clip in Final Cut, by group, by the naming settings.
    std::map<UUID, std::string> displayNames() const;

    // Smart Audio. An analysis reads the first recording of a clip once, keeps the verdict in `smartAudio`
    // and switches on the tracks of its blocks, unless the editor chose tracks by hand. It never fails.

    /// Analyses all settled clips that have sound, one after the other. `off` forgets all results.
    platform::Task runSmartAudioAnalysis(SmartAudioMode mode, bool forceOverwriteManualTracks);
    /// Analyses one clip, whatever its status, in the stored mode (`standard` for `off`), and measures its
    /// loudness and master gain.
    platform::Task runSmartAudioForGroup(const UUID& groupID, bool forceOverwriteManualTracks);
    /// Analyses a clip again that was analysed before, with the editor's choice of tracks kept: for every
    /// change that the verdict depends on.
    void reanalyseIfKnown(const UUID& groupID);
    /// Whether a scan starts an analysis by itself where the setting `smartAudioMode` was written. On at
    /// first; for a face that runs the analysis on terms of its own.
    void setAnalysesAfterScan(bool doesSo) { analysesAfterScan_ = doesSo; }
    /// Waits for the analysis that the last scan started by itself, if it did.
    platform::Task waitForAnalysisAfterScan() const;

    // The editor's choice of tracks. None of these opens an undo step: their caller does, by the names in
    // `trackSteps`.

    /// The channel's activation box: switches one track of the export on or off, starting from the tracks
    /// that are heard without a choice by hand.
    void toggleTrackActive(const UUID& groupID, int trackIndex);
    void soloTrackActive(const UUID& groupID, int trackIndex);
    /// The channel's box that lets the analysis use it.
    void toggleAlgorithmInclusion(const UUID& groupID, int trackIndex);
    void soloAlgorithmInclusion(const UUID& groupID, int trackIndex);

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
    // ImportController+SmartAudio.cpp
    struct AnalysisRun;
    static platform::Task analyseAll(std::weak_ptr<ImportController> weak, std::shared_ptr<AnalysisRun> run);
    static platform::Task analyseOne(std::weak_ptr<ImportController> weak, UUID groupID,
                                     std::shared_ptr<AnalysisRun> run);
    static platform::Task analyseClip(std::weak_ptr<ImportController> weak, UUID groupID,
                                      std::shared_ptr<AnalysisRun> run);
    static platform::Task measureLoudness(std::weak_ptr<ImportController> weak, UUID groupID);
    static platform::Task renderMixdown(std::weak_ptr<ImportController> weak, UUID groupID);
    std::shared_ptr<AnalysisRun> newRun(SmartAudioMode mode, bool forceOverwriteManualTracks) const;
    SmartAudioRequest analysisRequest(const SyncGroup& group, const AnalysisRun& run);
    std::function<void(double)> analysisReport(const AnalysisRun& run, const MediaAsset& audio);
    void adoptVerdict(const UUID& groupID, SmartAudioResult result, bool forceOverwriteManualTracks);
    void analysisBegan();
    void analysisEnded();
    void showAnalysisProgress(SmartAudioProgress progress);
    void startAnalysisAfterScan();
    /// The results belong to clips that are no more.
    void forgetSmartAudio();
    /// dB; by the settings and the calibration.
    double automaticMasterGainDB(double measuredLUFS) const;
    // ImportController+Tracks.cpp
    void editTracks(UUID groupID, const std::function<void(SyncGroup&)>& change);
    std::set<int> visibleActiveTracks(const SyncGroup& group) const;

    const std::shared_ptr<platform::MainThread> mainThread_;
    const std::shared_ptr<platform::SettingsStore> settings_;
    const std::shared_ptr<const platform::Clock> clock_;
    std::vector<std::weak_ptr<std::function<void(ImportField)>>> listeners_;

    std::optional<FileURL> videoFolderURL_;
    std::optional<FileURL> audioFolderURL_;
    ScanState scanState_ = ScanState::idle;
    ScanProgress progress_;
    std::optional<DiscoveryResult> discoveryResult_;
    std::optional<ScanResult> scanResult_;
    SyncGroupList syncGroups_;
    std::vector<WildTrack> wildTracks_;
    std::optional<std::string> aleMatchStatus_;
    SmartAudioState smartAudio_;
    int runningAnalyses_ = 0;
    bool analysesAfterScan_ = true;
    std::optional<platform::Task> analysisAfterScan_;
    /// Tells a scan that another scan or a reset has taken its place.
    std::uint64_t scanNumber_ = 0;
    std::optional<platform::Task> runningScan_;

    const FileDiscoveryService discoveryService_{};
    const std::shared_ptr<MediaProbeService> probeService_;
    const SyncEngine syncEngine_{};
    // Last, as what runs on their queues is waited for before anything else goes: one operation of the
    // services at a time, one analysis, and one measurement of loudness.
    const std::unique_ptr<platform::SerialQueue> serviceQueue_;
    const std::unique_ptr<SmartAudioRouter> smartAudioRouter_;
    const std::unique_ptr<platform::SerialQueue> loudnessQueue_;
};

} // namespace orvane
