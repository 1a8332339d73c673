#pragma once

#include "OrvaneSyncCore/Models/ALEFile.h"
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
#include "Platform/MainThread.h"
#include "Platform/SettingsStore.h"
#include "Platform/Task.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
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
    /// The camera or sound report that is loaded, and where it lies; `report` tells of a change of these
    /// four.
    const std::optional<ALEFile>& aleFile() const { return aleFile_; }
    const std::optional<FileURL>& aleFileURL() const { return aleFileURL_; }
    /// Why the last report could not be loaded, with the file's name; absent when it was.
    const std::optional<std::string>& aleImportError() const { return aleImportError_; }
    /// The last message of a report merge; absent without a report.
    const std::optional<std::string>& aleMatchStatus() const { return aleMatchStatus_; }
    const ExportSettings::SmartAudioResults& smartAudioResults() const { return smartAudioResults_; }

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

    // Reports and imported metadata. A group that is not there changes nothing.

    /// Reads a report and lays it over the clips; with no clips yet, the next scan does. A failure is told by
    /// `aleImportError`, and forgets an earlier report.
    void loadALE(const FileURL& url);
    void clearALEMetadata(const UUID& groupID);
    void clearLockitMetadata(const UUID& groupID);
    void clearALEMetadataForAllClips();
    void clearLockitMetadataForAllClips();
    /// Clips with metadata of that kind.
    int aleMetadataClipCount() const;
    int lockitMetadataClipCount() const;
    ALEMatchStrategy aleMatchStrategyFromDefaults() const;
    /// How many clips got a row; with a hint where they are so few that the strategy may be wrong.
    static std::string aleMatchStatusMessage(const MetadataMerger::MergeResult& result,
                                             const ALEMatchStrategy& strategy);

    // Counts over the clips.

    int matchedCount() const;   ///< settled clips, without audio too
    int unmatchedCount() const; ///< ambiguous and unmatched ones
    int syncClipCount() const;  ///< settled clips with audio
    int mosCount() const;       ///< settled clips without audio
    /// Multicam clips that an export would build.
    int projectedMulticamCount() const;

    /// The name of every clip in Final Cut, by group, by the naming settings.
    std::map<UUID, std::string> displayNames() const;

    // Smart Audio.

    /// Listens to every clip's recordings and fills `smartAudioResults`.
    platform::Task runSmartAudioAnalysis(SmartAudioMode mode, bool forceOverwriteManualTracks);

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
    void clearMetadata(std::string_view actionName, const std::function<bool(SyncGroupList&)>& clear);
    // ImportController+SmartAudio.cpp
    static platform::Task analyse(std::weak_ptr<ImportController> weak, SmartAudioMode mode,
                                  bool forceOverwriteManualTracks);
    static platform::Task startSmartAudioAfterScan(std::weak_ptr<ImportController> weak);

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
    std::optional<FileURL> aleFileURL_;
    std::optional<ALEFile> aleFile_;
    std::optional<std::string> aleImportError_;
    std::optional<std::string> aleMatchStatus_;
    ExportSettings::SmartAudioResults smartAudioResults_;
    /// Tells a scan that another scan or a reset has taken its place.
    std::uint64_t scanNumber_ = 0;
    std::optional<platform::Task> runningScan_;

    const FileDiscoveryService discoveryService_{};
    const std::shared_ptr<MediaProbeService> probeService_;
    const SyncEngine syncEngine_{};
    const ALEParser aleParser_{};
    const MetadataMerger metadataMerger_{};
    /// One operation of the services at a time. Last: it is waited for before the services go.
    const std::unique_ptr<platform::SerialQueue> serviceQueue_;
};

} // namespace orvane
