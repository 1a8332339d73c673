#include "OrvaneSyncApp/Controllers/ScanController.h"

#include "OrvaneSyncCore/Models/FilePaths.h"
#include "OrvaneSyncCore/Services/Matching/ProxyFiles.h"
#include "Platform/Files.h"

#include <chrono>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace orvane {

namespace {

/// One form for every file, and each file once: the folders may be the same, or one inside the other. In the
/// order of the paths, on which the order of clips, matches and wild tracks rests. The way to a folder is
/// looked up once, whatever it holds.
class Standardization {
  public:
    std::vector<FileURL> sortedWithoutDuplicates(const std::vector<FileURL>& urls) {
        std::unordered_set<FileURL> seen;
        std::vector<FileURL> result;
        result.reserve(urls.size());
        for (const FileURL& url : urls) {
            FileURL standard = standardized(url);
            if (seen.insert(standard).second) result.push_back(std::move(standard));
        }
        sortByPath(result);
        return result;
    }

  private:
    FileURL standardized(const FileURL& url) {
        const std::size_t slash = url.path.rfind('/');
        if (slash == std::string::npos) return {platform::files::standardized(url.path)};
        const auto [folder, isNew] = folders_.try_emplace(url.path.substr(0, slash));
        if (isNew) {
            // A link that is the last component stays, so the folder is asked for as the way to something in
            // it.
            const std::string inside = platform::files::standardized(folder->first + "/x");
            folder->second = inside.substr(0, inside.size() - 1);
        }
        return {folder->second + url.path.substr(slash + 1)};
    }

    std::unordered_map<std::string, std::string> folders_;
};

/// Video folders may hold audio and audio folders video.
DiscoveryResult discover(const FileDiscoveryService& service, const std::vector<std::string>& folders) {
    const DiscoveryResult found = service.discover(folders);
    Standardization standard;
    return {standard.sortedWithoutDuplicates(found.videoURLs),
            standard.sortedWithoutDuplicates(found.audioURLs),
            standard.sortedWithoutDuplicates(found.unreadableFolders),
            standard.sortedWithoutDuplicates(found.brokenLinks)};
}

double secondsBetween(std::chrono::nanoseconds start, std::chrono::nanoseconds end) {
    return std::chrono::duration<double>(end - start).count();
}

} // namespace

ScanController::ScanController(OpenWork& work, SmartAudioController& smartAudio, ReportController& reports,
                               std::shared_ptr<ProbeCache> probeCache)
    : work_(work), smartAudio_(smartAudio), reports_(reports),
      probeService_(std::make_shared<MediaProbeService>(*work.environment.settings, std::move(probeCache))),
      queue_(platform::SerialQueue::create("services")) {}

void ScanController::setVideoFolderURL(std::optional<FileURL> folder) {
    work_.setVideoFolderURL(std::move(folder));
}

void ScanController::setAudioFolderURL(std::optional<FileURL> folder) {
    work_.setAudioFolderURL(std::move(folder));
}

bool ScanController::canScan() const { return work_.videoFolderURL() || work_.audioFolderURL(); }

platform::Task ScanController::probeAudio(FileURL file,
                                          std::shared_ptr<std::optional<MediaAsset>> result) const {
    auto probing = platform::onQueue(
        *queue_, *work_.environment.mainThread,
        [service = probeService_, file = std::move(file)] { return service->probe(file, AssetKind::audio); });
    *result = co_await probing;
}

platform::Task ScanController::startScan() {
    work_.notices.assertOnMainThread();
    if (runningScan_ && !runningScan_->isDone()) return *runningScan_;
    runningScan_ = scan(work_.weak(this), ++scanNumber_);
    return *runningScan_;
}

/// Null when the controller is gone, or a reset or another scan has taken this scan's place.
std::shared_ptr<ScanController> ScanController::stillScanning(const std::weak_ptr<ScanController>& weak,
                                                              std::uint64_t scanNumber) {
    auto self = weak.lock();
    return self && self->scanNumber_ == scanNumber ? self : nullptr;
}

platform::Task ScanController::scan(std::weak_ptr<ScanController> weak, std::uint64_t scanNumber) {
    auto self = weak.lock();
    if (!self || !self->canScan()) co_return;
    const auto start = self->work_.environment.clock->now();
    self->set(self->scanState_, ScanState::discovering, ImportField::scanState);
    self->set(self->progress_, ScanProgress::idle(), ImportField::progress);

    std::vector<std::string> folders;
    for (const auto& folder : {self->work_.videoFolderURL(), self->work_.audioFolderURL()})
        if (folder && (folders.empty() || folders.front() != folder->path)) folders.push_back(folder->path);
    // Every wait lets go of the controller, so that an abandoned one is not kept alive by its scan.
    auto discovery = platform::onQueue(
        *self->queue_, *self->work_.environment.mainThread,
        [service = self->discoveryService_, folders] { return discover(service, folders); });
    self.reset();
    const DiscoveryResult found = co_await discovery;
    self = stillScanning(weak, scanNumber);
    if (!self) co_return;
    self->set(self->discoveryResult_, std::optional(found), ImportField::discoveryResult);
    if (found.isEmpty()) {
        self->set(self->scanState_, ScanState::done, ImportField::scanState);
        self->set(self->scanResult_, ScanResult{}, ImportField::scanResult);
        co_return;
    }

    self->set(self->scanState_, ScanState::probing, ImportField::scanState);
    const int videoCount = static_cast<int>(found.videoCount());
    const int total = static_cast<int>(found.totalCount());
    ScanResult result;
    for (const AssetKind kind : {AssetKind::video, AssetKind::audio}) {
        const bool isVideo = kind == AssetKind::video;
        auto report = isVideo ? self->progressReport(scanNumber, "Probing video files", 0, total)
                              : self->progressReport(scanNumber, "Probing audio files", videoCount, total);
        auto probing = platform::onQueue(
            *self->queue_, *self->work_.environment.mainThread,
            [service = self->probeService_, urls = isVideo ? found.videoURLs : found.audioURLs, kind,
             report = std::move(report)] {
                std::vector<FileURL> unread;
                auto assets =
                    service->probeAll(urls, kind, report, [&](const FileURL& url) { unread.push_back(url); });
                return std::pair(std::move(assets), std::move(unread));
            });
        self.reset();
        auto [assets, unread] = co_await probing;
        (isVideo ? result.videoAssets : result.audioAssets) = std::move(assets);
        result.unreadFiles.insert(result.unreadFiles.end(), unread.begin(), unread.end());
        self = stillScanning(weak, scanNumber);
        if (!self) co_return;
    }
    result.proxies = ProxyFiles::takeOut(result.videoAssets);
    result.scanDuration = secondsBetween(start, self->work_.environment.clock->now());
    self->set(self->scanResult_, std::move(result), ImportField::scanResult);

    self->set(self->scanState_, ScanState::matching, ImportField::scanState);
    self->set(self->progress_, ScanProgress{"Matching by timecode", 0, 0}, ImportField::progress);
    if (self->scanNumber_ != scanNumber) co_return; // somebody has reset the work on this notice
    const auto& scanned = *self->scanResult_;
    self->adoptMatches(self->syncEngine_.match(scanned.videoAssets, scanned.audioAssets),
                       scanned.audioAssets);
    self->reports_.mergeLoadedReport();
    if (self->whenMatched) self->whenMatched();
    if (self->scanNumber_ != scanNumber) co_return;
    self->set(self->scanState_, ScanState::done, ImportField::scanState);
    self->set(self->progress_, ScanProgress::idle(), ImportField::progress);
    if (self->scanNumber_ == scanNumber) self->smartAudio_.startAnalysisAfterScan();
}

std::function<void(int, int)> ScanController::progressReport(std::uint64_t scanNumber, std::string phase,
                                                             int before, int total) {
    return [weak = work_.weak(this), main = work_.environment.mainThread, scanNumber,
            phase = std::move(phase), before, total](int current, int) {
        main->post([weak, scanNumber, progress = ScanProgress{phase, before + current, total}] {
            if (const auto self = stillScanning(weak, scanNumber))
                self->set(self->progress_, progress, ImportField::progress);
        });
    };
}

/// The old groups go; wild tracks keep their names and approvals where the probe gave the same asset again.
void ScanController::adoptMatches(SyncGroupList groups, const std::vector<MediaAsset>& audioAssets) {
    std::unordered_set<UUID> claimed;
    for (const SyncGroup& group : groups)
        for (const AudioMatch& match : group.audioMatches) claimed.insert(match.audio->id);
    std::unordered_map<UUID, const WildTrack*> before;
    for (const WildTrack& track : work_.wildTracks()) before[track.id] = &track;

    std::vector<WildTrack> wild;
    for (const MediaAsset& asset : audioAssets) {
        if (claimed.contains(asset.id)) continue;
        WildTrack& track = wild.emplace_back(asset);
        const auto old = before.find(asset.id);
        if (old == before.end()) continue;
        track.customName = old->second->customName;
        track.isApproved = old->second->isApproved;
    }
    work_.notices.together([&] {
        work_.replace(std::move(groups), std::move(wild));
        smartAudio_.caches().removeAll();
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

/// A scan that runs finds out that its work is no longer asked for.
void ScanController::abandonScan() {
    ++scanNumber_;
    runningScan_.reset();
}

} // namespace orvane
