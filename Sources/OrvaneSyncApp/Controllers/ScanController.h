#pragma once

#include "OrvaneSyncApp/Controllers/OpenWork.h"
#include "OrvaneSyncApp/Controllers/ReportController.h"
#include "OrvaneSyncApp/Controllers/ScanOutcome.h"
#include "OrvaneSyncApp/Controllers/SmartAudioController.h"
#include "OrvaneSyncCore/Models/ScanModels.h"
#include "OrvaneSyncCore/Services/Ingest/FileDiscoveryService.h"
#include "OrvaneSyncCore/Services/Ingest/MediaProbeService.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"
#include "Platform/Task.h"
#include "Platform/Throttle.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

namespace orvane {

/// Makes clips and wild tracks from the folders. Interface thread; files are read on a queue, one operation
/// at a time.
class ScanController {
  public:
    /// Null cache: probe results are neither looked up nor stored.
    ScanController(OpenWork& work, SmartAudioController& smartAudio, ReportController& reports,
                   std::shared_ptr<ProbeCache> probeCache);
    ~ScanController();

    ScanState scanState() const { return scanState_; }
    const ScanProgress& progress() const { return progress_; }
    /// The result of the last scan; null without one.
    const std::shared_ptr<const DiscoveryResult>& discoveryResult() const { return discoveryResult_; }
    const std::shared_ptr<const ScanResult>& scanResult() const { return scanResult_; }

    void setVideoFolderURL(std::optional<FileURL> folder);
    void setAudioFolderURL(std::optional<FileURL> folder);
    void setScope(ScanScope scope);
    /// Takes effect with the next scan.
    void setCorrections(SourceCorrections corrections);
    /// Whether at least one folder is set.
    bool canScan() const;
    /// Replaces all clips, and stops what works on the earlier ones (`OpenWork::runOnClips`). Files that
    /// cannot be read stay in the work with what is known about them. Ends when the clips are made; Smart
    /// Audio starts after that. Fails with a CorrectionError, and changes nothing, if the work's sound offset
    /// has a frame number that does not exist at the rate of the clips. A second call while a scan runs waits
    /// for that scan. A scan that is stopped changes nothing.
    ///
    /// If the work holds decisions, the scan is an undo step: undoing it restores the earlier clips and the
    /// earlier result. `of`: whether the folders are those of the open work, or of other work that replaces
    /// it, which clears the undo steps.
    platform::Task startScan(OpenWork::ScanOf of = OpenWork::ScanOf::sameWork);
    /// The scan that was started last, which may have ended; an ended task without one.
    platform::Task lastScan() const { return runningScan_.value_or(platform::Task::ended()); }
    /// Stops a running scan, which changes nothing; its task fails with Stopped.
    void stopScan();
    /// Ends a running scan, which changes nothing and reports nothing.
    void abandonScan();
    /// Back to the state before any scan.
    void clear();

    /// Changes whenever a scan starts or is abandoned.
    std::uint64_t scanNumber() const { return scanNumber_; }
    /// Called before the clips of a scan are made. Returns the edit to make on another thread before the work
    /// gets the clips; null for none.
    using EditOfClips = std::function<void(SyncGroupList&, const ScanResult& scanned, const MatchRules& rules,
                                           const std::stop_token& stop)>;
    std::function<EditOfClips()> editsOfClips;
    /// Called when the work has the clips of a scan, with report and edits applied.
    std::function<void()> whenMatched;
    /// Reads one file, after the files that are being read; writes it to `result`.
    platform::Task probeAudio(FileURL file, std::shared_ptr<std::optional<MediaAsset>> result) const;

  private:
    /// Changes an observable field.
    template <class Value>
    void set(Value& field, std::type_identity_t<Value> value, ImportField name) {
        field = std::move(value);
        work_.notify(name);
    }
    /// The state that a scan replaces.
    struct Earlier {
        ScanState scanState;
        std::shared_ptr<const DiscoveryResult> discoveryResult;
        std::shared_ptr<const ScanResult> scanResult;
    };
    using ScanStep = std::pair<std::uint64_t, ScanProgress>; ///< by scan number

    using ScanOf = OpenWork::ScanOf;
    static platform::Task scan(std::weak_ptr<ScanController> weak, std::uint64_t scanNumber, ScanOf of);
    static platform::Task scanSteps(std::weak_ptr<ScanController> weak, std::uint64_t scanNumber, ScanOf of);
    static platform::Task match(std::weak_ptr<ScanController> weak, std::uint64_t scanNumber,
                                std::shared_ptr<const ScanOutcome> outcome, ScanOf of);
    void restore(Earlier earlier);
    void show(const ScanOutcome& outcome);
    static std::shared_ptr<ScanController> stillScanning(const std::weak_ptr<ScanController>& weak,
                                                         std::uint64_t scanNumber);
    MediaProbeService::Progress progressReport(std::uint64_t scanNumber, std::string phase, int before,
                                               int total);

    OpenWork& work_;
    SmartAudioController& smartAudio_;
    ReportController& reports_;
    ScanState scanState_ = ScanState::idle;
    ScanProgress progress_;
    std::shared_ptr<const DiscoveryResult> discoveryResult_;
    std::shared_ptr<const ScanResult> scanResult_;
    const std::shared_ptr<platform::Throttle<ScanStep>> shown_;
    /// By this a scan sees that another scan or a reset has replaced it.
    std::uint64_t scanNumber_ = 0;
    std::optional<platform::Task> runningScan_;
    const FileDiscoveryService discoveryService_{};
    const std::shared_ptr<MediaProbeService> probeService_;
    const SyncEngine syncEngine_{};
    const std::unique_ptr<platform::SerialQueue> queue_;
};

} // namespace orvane
