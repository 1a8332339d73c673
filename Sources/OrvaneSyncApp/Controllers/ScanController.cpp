#include "OrvaneSyncApp/Controllers/ScanController.h"

#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Ingest/CameraCopies.h"
#include "OrvaneSyncCore/Services/Matching/ProxyFiles.h"
#include "OrvaneSyncCore/Services/Matching/TakeStarts.h"
#include "Platform/OnQueue.h"
#include "Platform/Stop.h"

#include <chrono>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace orvane {

namespace {

/// The result of the matching in a scan.
struct Matches {
    SyncGroupList groups;
    std::vector<WildTrack> wild;
    MatchedBy by;
    std::optional<ReportController::Applied> report;
};

std::vector<WildTrack> unclaimed(const std::vector<MediaAsset>& audioAssets, const SyncGroupList& groups) {
    std::unordered_set<UUID> claimed;
    for (const SyncGroup& group : groups)
        for (const AudioMatch& match : group.audioMatches) claimed.insert(match.audio->id);
    std::vector<WildTrack> wild;
    for (const MediaAsset& asset : audioAssets)
        if (!claimed.contains(asset.id)) wild.emplace_back(asset);
    return wild;
}

double secondsBetween(std::chrono::nanoseconds start, std::chrono::nanoseconds end) {
    return std::chrono::duration<double>(end - start).count();
}

} // namespace

ScanController::ScanController(OpenWork& work, SmartAudioController& smartAudio, ReportController& reports,
                               std::shared_ptr<ProbeCache> probeCache)
    : work_(work), smartAudio_(smartAudio), reports_(reports),
      shown_(platform::Throttle<ScanStep>::create(work.environment.mainThread, work.environment.clock,
                                                  platform::progressInterval,
                                                  [this](const ScanStep& step) {
                                                      if (step.first == scanNumber_)
                                                          set(progress_, step.second, ImportField::progress);
                                                  })),
      probeService_(std::make_shared<MediaProbeService>(work.environment.settings, std::move(probeCache))),
      queue_(platform::SerialQueue::create("services")) {
    work_.whenScanTakenBack = [this](const std::shared_ptr<const ScanOutcome>& outcome) {
        show(outcome ? *outcome : ScanOutcome());
    };
}

ScanController::~ScanController() { shown_->close(); }

void ScanController::setVideoFolderURL(std::optional<FileURL> folder) {
    work_.setVideoFolderURL(std::move(folder));
}

void ScanController::setAudioFolderURL(std::optional<FileURL> folder) {
    work_.setAudioFolderURL(std::move(folder));
}

void ScanController::setScope(ScanScope scope) { work_.setScanScope(std::move(scope)); }

void ScanController::setCorrections(SourceCorrections corrections) {
    work_.setSourceCorrections(std::move(corrections));
}

bool ScanController::canScan() const { return !work_.folders().empty(); }

platform::Task ScanController::probeAudio(FileURL file,
                                          std::shared_ptr<std::optional<MediaAsset>> result) const {
    auto probing =
        platform::onQueue(*queue_, work_.environment.mainThread,
                          [service = probeService_, file = std::move(file)](const std::stop_token& stop) {
                              return service->probe(file, AssetKind::audio, {}, stop);
                          });
    *result = co_await probing;
}

platform::Task ScanController::startScan(ScanOf of) {
    work_.notices.assertOnMainThread();
    if (runningScan_ && !runningScan_->isDone()) return *runningScan_;
    if (canScan()) work_.stopOnClips();
    runningScan_ = work_.running.add(scan(work_.weak(this), ++scanNumber_, of));
    return *runningScan_;
}

/// Null if the controller was destroyed, or if a reset or another scan has replaced this scan.
std::shared_ptr<ScanController> ScanController::stillScanning(const std::weak_ptr<ScanController>& weak,
                                                              std::uint64_t scanNumber) {
    auto self = weak.lock();
    return self && self->scanNumber_ == scanNumber ? self : nullptr;
}

platform::Task ScanController::scan(std::weak_ptr<ScanController> weak, std::uint64_t scanNumber, ScanOf of) {
    auto self = weak.lock();
    if (!self || !self->canScan()) co_return;
    Earlier earlier{self->scanState_, self->discoveryResult_, self->scanResult_};
    self.reset();
    const platform::Task steps = scanSteps(weak, scanNumber, of);
    try {
        co_await steps;
    } catch (const platform::Stopped&) {
        self = stillScanning(weak, scanNumber);
        if (self) self->restore(std::move(earlier));
        throw;
    } catch (const CorrectionError&) {
        self = stillScanning(weak, scanNumber);
        if (self) self->restore(std::move(earlier));
        throw;
    }
}

void ScanController::show(const ScanOutcome& outcome) {
    set(discoveryResult_, outcome.discoveryResult, ImportField::discoveryResult);
    set(scanResult_, outcome.scanResult, ImportField::scanResult);
}

void ScanController::restore(Earlier earlier) {
    shown_->drop();
    work_.notices.together([&] {
        set(discoveryResult_, std::move(earlier.discoveryResult), ImportField::discoveryResult);
        set(scanResult_, std::move(earlier.scanResult), ImportField::scanResult);
        set(scanState_, earlier.scanState, ImportField::scanState);
        set(progress_, ScanProgress::idle(), ImportField::progress);
    });
}

platform::Task ScanController::scanSteps(std::weak_ptr<ScanController> weak, std::uint64_t scanNumber,
                                         ScanOf of) {
    auto self = weak.lock();
    if (!self) co_return;
    const auto start = self->work_.environment.clock->now();
    self->set(self->scanState_, ScanState::discovering, ImportField::scanState);
    self->set(self->progress_, ScanProgress::idle(), ImportField::progress);

    std::vector<std::string> folders;
    for (const FileURL& folder : self->work_.folders()) folders.push_back(folder.path);
    // The controller is released during each wait, so that its scan does not keep it alive.
    auto discovery = platform::onQueue(
        *self->queue_, self->work_.environment.mainThread,
        [service = self->discoveryService_, folders, exclusions = self->work_.scanScope().exclusions](
            const std::stop_token& stop) { return service.discoverOnce(folders, stop, exclusions); });
    self.reset();
    const auto shared = std::make_shared<const DiscoveryResult>(co_await discovery);
    const DiscoveryResult& found = *shared;
    self = stillScanning(weak, scanNumber);
    if (!self) co_return;
    self->set(self->discoveryResult_, shared, ImportField::discoveryResult);
    if (found.isEmpty()) {
        self->set(self->scanState_, ScanState::done, ImportField::scanState);
        self->set(self->scanResult_, std::make_shared<const ScanResult>(), ImportField::scanResult);
        co_return;
    }

    self->set(self->scanState_, ScanState::probing, ImportField::scanState);
    const int videoCount = static_cast<int>(found.videoCount());
    const int total = static_cast<int>(found.totalCount());
    const auto result = std::make_shared<ScanResult>();
    for (const AssetKind kind : {AssetKind::video, AssetKind::audio}) {
        const bool isVideo = kind == AssetKind::video;
        auto report = isVideo ? self->progressReport(scanNumber, "Probing video files", 0, total)
                              : self->progressReport(scanNumber, "Probing audio files", videoCount, total);
        auto probing = platform::onQueue(
            *self->queue_, self->work_.environment.mainThread,
            [service = self->probeService_, urls = isVideo ? found.videoURLs : found.audioURLs, kind,
             sharesStarts = self->work_.environment.settings->get(settings::ltcEnabled),
             report = std::move(report)](const std::stop_token& stop) {
                ScanResult part;
                const auto notRead = [&](const FileURL& url) { part.unreadFiles.push_back(url); };
                auto assets = service->probeAll(urls, kind, report, notRead, stop);
                if (kind == AssetKind::video) {
                    part.proxies = ProxyFiles::takeOut(assets, stop);
                    part.copies = CameraCopies::takeOut(assets, stop);
                }
                if (kind == AssetKind::audio && sharesStarts) TakeStarts::share(assets, stop);
                if (kind == AssetKind::audio) TakeStarts::continueAtMidnight(assets, stop);
                (kind == AssetKind::video ? part.videoAssets : part.audioAssets) = std::move(assets);
                return part;
            });
        self.reset();
        ScanResult part = co_await probing;
        if (isVideo) {
            result->videoAssets = std::move(part.videoAssets);
            result->proxies = std::move(part.proxies);
            result->copies = std::move(part.copies);
        } else {
            result->audioAssets = std::move(part.audioAssets);
        }
        result->unreadFiles.insert(result->unreadFiles.end(), part.unreadFiles.begin(),
                                   part.unreadFiles.end());
        self = stillScanning(weak, scanNumber);
        if (!self) co_return;
        self->shown_->flush();
    }
    result->scanDuration = secondsBetween(start, self->work_.environment.clock->now());
    self->set(self->scanResult_, result, ImportField::scanResult);

    self->set(self->scanState_, ScanState::matching, ImportField::scanState);
    self->set(self->progress_, ScanProgress{"Matching by timecode", 0, 0}, ImportField::progress);
    self.reset();
    const platform::Task matching =
        match(weak, scanNumber, std::make_shared<const ScanOutcome>(ScanOutcome{shared, result}), of);
    co_await matching;
    self = stillScanning(weak, scanNumber); // an observer may have reset the work
    if (!self) co_return;
    self->set(self->scanState_, ScanState::done, ImportField::scanState);
    self->set(self->progress_, ScanProgress::idle(), ImportField::progress);
    if (self->scanNumber_ == scanNumber) self->smartAudio_.startAnalysisAfterScan();
}

MediaProbeService::Progress ScanController::progressReport(std::uint64_t scanNumber, std::string phase,
                                                           int before, int total) {
    return [shown = std::weak_ptr(shown_), scanNumber, phase = std::move(phase), before,
            total](int current, int, const FileURL* currentFile) {
        if (const auto own = shown.lock())
            own->post(
                {scanNumber, ScanProgress{phase, before + current, total,
                                          currentFile == nullptr ? "" : currentFile->lastPathComponent()}});
    };
}

platform::Task ScanController::match(std::weak_ptr<ScanController> weak, std::uint64_t scanNumber,
                                     std::shared_ptr<const ScanOutcome> outcome, ScanOf of) {
    auto self = stillScanning(weak, scanNumber);
    if (!self) co_return;
    const auto merging = self->reports_.merging();
    auto matching = platform::onQueue(
        *self->queue_, self->work_.environment.mainThread,
        [engine = self->syncEngine_, scanned = outcome->scanResult, merging,
         corrections = self->work_.nextCorrections(),
         edit = self->editsOfClips ? self->editsOfClips() : nullptr](const std::stop_token& stop) {
            Matches made;
            made.by = MatchedBy::of(corrections, rateOfMostClips(scanned->videoAssets));
            made.groups = engine.match(scanned->videoAssets, scanned->audioAssets, made.by.rules, stop);
            made.wild = unclaimed(scanned->audioAssets, made.groups);
            made.report = merging.apply(made.groups, stop);
            if (edit) edit(made.groups, *scanned, made.by.rules, stop);
            made.groups.makeIndex();
            return made;
        });
    self.reset();
    Matches made = co_await matching;
    self = stillScanning(weak, scanNumber);
    if (!self) co_return;
    self->work_.notices.together([&] {
        // An undo may have restored another scan result in the meantime.
        if (self->scanResult_ != outcome->scanResult) self->show(*outcome);
        self->work_.adoptScan(std::move(made.groups), std::move(made.wild), std::move(made.by), outcome, of);
        self->smartAudio_.caches().leaveClips();
        self->reports_.merged(merging, std::move(made.report));
        if (self->whenMatched) self->whenMatched();
    });
}

void ScanController::clear() {
    abandonScan();
    discoveryResult_.reset();
    scanResult_.reset();
    scanState_ = ScanState::idle;
    progress_ = ScanProgress::idle();
    using enum ImportField;
    for (const ImportField field : {discoveryResult, scanResult, scanState, progress}) work_.notify(field);
}

void ScanController::stopScan() {
    if (runningScan_) runningScan_->requestStop();
}

void ScanController::abandonScan() {
    ++scanNumber_;
    shown_->drop();
    if (runningScan_) runningScan_->requestStop();
    runningScan_.reset();
}

} // namespace orvane
