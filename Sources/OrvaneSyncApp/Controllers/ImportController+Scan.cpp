#include "OrvaneSyncApp/Controllers/ImportController.h"

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
DiscoveryResult discover(const FileDiscoveryService& service, const std::vector<std::string>& folders,
                         const std::stop_token& stop) {
    const DiscoveryResult found = service.discover(folders, stop);
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

platform::Task ImportController::startScan() {
    assertOnMainThread();
    if (runningScan_ && !runningScan_->isDone()) return *runningScan_;
    runningScan_ = scan(weak_from_this(), ++scanNumber_);
    return *runningScan_;
}

/// Null when the controller is gone, or a reset or another scan has taken this scan's place.
std::shared_ptr<ImportController> ImportController::stillScanning(const std::weak_ptr<ImportController>& weak,
                                                                  std::uint64_t scanNumber) {
    auto self = weak.lock();
    return self && self->scanNumber_ == scanNumber ? self : nullptr;
}

platform::Task ImportController::scan(std::weak_ptr<ImportController> weak, std::uint64_t scanNumber) {
    auto self = weak.lock();
    if (!self || !self->canScan()) co_return;
    const auto start = self->clock_->now();
    self->set(self->scanState_, ScanState::discovering, ImportField::scanState);
    self->set(self->progress_, ScanProgress::idle(), ImportField::progress);

    std::vector<std::string> folders;
    for (const auto& folder : {self->videoFolderURL_, self->audioFolderURL_})
        if (folder && (folders.empty() || folders.front() != folder->path)) folders.push_back(folder->path);
    // Every wait lets go of the controller, so that an abandoned one is not kept alive by its scan.
    auto discovery =
        platform::onQueue(*self->serviceQueue_, self->mainThread_,
                          [service = self->discoveryService_, folders](const std::stop_token& stop) {
                              return discover(service, folders, stop);
                          });
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
            *self->serviceQueue_, self->mainThread_,
            [service = self->probeService_, urls = isVideo ? found.videoURLs : found.audioURLs, kind,
             report = std::move(report)](const std::stop_token& stop) {
                std::vector<FileURL> unread;
                const auto notRead = [&](const FileURL& url) { unread.push_back(url); };
                auto assets = service->probeAll(urls, kind, report, notRead, stop);
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
    result.scanDuration = secondsBetween(start, self->clock_->now());
    self->set(self->scanResult_, std::move(result), ImportField::scanResult);

    self->set(self->scanState_, ScanState::matching, ImportField::scanState);
    self->set(self->progress_, ScanProgress{"Matching by timecode", 0, 0}, ImportField::progress);
    if (self->scanNumber_ != scanNumber) co_return; // somebody who was told has reset the work
    const auto& scanned = *self->scanResult_;
    self->adoptMatches(self->syncEngine_.match(scanned.videoAssets, scanned.audioAssets),
                       scanned.audioAssets);
    self->mergeLoadedReport();
    self->applyProjectEdits();
    if (self->scanNumber_ != scanNumber) co_return;
    self->set(self->scanState_, ScanState::done, ImportField::scanState);
    self->set(self->progress_, ScanProgress::idle(), ImportField::progress);
    if (self->scanNumber_ == scanNumber) self->startAnalysisAfterScan();
}

std::function<void(int, int)> ImportController::progressReport(std::uint64_t scanNumber, std::string phase,
                                                               int before, int total) {
    return [weak = weak_from_this(), main = mainThread_, scanNumber, phase = std::move(phase), before,
            total](int current, int) {
        main->post([weak, scanNumber, progress = ScanProgress{phase, before + current, total}] {
            if (const auto self = stillScanning(weak, scanNumber))
                self->set(self->progress_, progress, ImportField::progress);
        });
    };
}

/// The old groups go; wild tracks keep their names and approvals where the probe gave the same asset again.
void ImportController::adoptMatches(SyncGroupList groups, const std::vector<MediaAsset>& audioAssets) {
    groups.makeIndex();
    std::unordered_set<UUID> claimed;
    for (const SyncGroup& group : groups)
        for (const AudioMatch& match : group.audioMatches) claimed.insert(match.audio->id);
    std::unordered_map<UUID, const WildTrack*> before;
    for (const WildTrack& track : wildTracks_) before[track.id] = &track;

    std::vector<WildTrack> wild;
    for (const MediaAsset& asset : audioAssets) {
        if (claimed.contains(asset.id)) continue;
        WildTrack& track = wild.emplace_back(asset);
        const auto old = before.find(asset.id);
        if (old == before.end()) continue;
        track.customName = old->second->customName;
        track.isApproved = old->second->isApproved;
    }
    // Both first: clips and wild tracks are two halves of one state.
    syncGroups_ = std::move(groups);
    isEmptiedByEdit_ = false;
    wildTracks_ = std::move(wild);
    forgetSmartAudio();
    notify(ImportField::syncGroups);
    notify(ImportField::wildTracks);
    notify(ImportField::smartAudio);
}

void ImportController::reset() {
    assertOnMainThread();
    abandonScan();
    project_.unapplied.reset();
    videoFolderURL_.reset();
    audioFolderURL_.reset();
    discoveryResult_.reset();
    scanResult_.reset();
    aleFileURL_.reset();
    aleFile_.reset();
    aleImportError_.reset();
    aleMatchStatus_.reset();
    syncGroups_ = {};
    isEmptiedByEdit_ = false;
    wildTracks_.clear();
    forgetSmartAudio();
    scanState_ = ScanState::idle;
    progress_ = ScanProgress::idle();
    using enum ImportField;
    for (const ImportField field : {videoFolderURL, audioFolderURL, discoveryResult, scanResult, report,
                                    syncGroups, wildTracks, smartAudio, scanState, progress})
        notify(field);
}

} // namespace orvane
