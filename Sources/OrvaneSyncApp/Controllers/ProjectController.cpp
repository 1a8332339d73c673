#include "OrvaneSyncApp/Controllers/ProjectController.h"

#include "OrvaneSyncApp/Controllers/ProjectTracks.h"
#include "Platform/Files.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace orvane {

namespace {

bool isThere(const std::optional<FileURL>& folder) {
    return !folder || platform::files::exists(folder->path);
}

/// Entries that wait for their clips stand in the file behind those of the clips that are there.
void keepUnapplied(const OrvaneSyncProject& unapplied, OrvaneSyncProject& project) {
    std::unordered_set<FileURL> present;
    for (const PersistedGroup& entry : project.groups) present.insert(entry.videoPath);
    for (const PersistedGroup& entry : unapplied.groups)
        if (!present.contains(entry.videoPath)) project.groups.push_back(entry);
}

/// A project as it was read, and whether a scan of its folders can begin.
struct Opened {
    std::shared_ptr<const OrvaneSyncProject> project;
    bool hasFolders = false;
};

/// Returns the videos of the clips that lost their choice of tracks.
std::vector<FileURL> lay(const ProjectService& service, const OrvaneSyncProject& project,
                         SyncGroupList& groups, const std::vector<MediaAsset>& otherAudio) {
    service.applyEdits(project, groups);
    AudioByURL known;
    for (const SyncGroup& group : groups)
        for (const AudioMatch& match : group.audioMatches) known[match.audio->url] = &*match.audio;
    for (const MediaAsset& audio : otherAudio) known[audio.url] = &audio;
    return fitTracksToRecordings(project, groups, known);
}

Opened read(const FileURL& url) {
    const auto project = std::make_shared<const OrvaneSyncProject>(ProjectService().load(url));
    return {project, isThere(project->videoFolderPath) && isThere(project->audioFolderPath) &&
                         std::ranges::all_of(project->scanScope.moreFolders, isThere)};
}

} // namespace

ProjectController::ProjectController(OpenWork& work, ScanController& scan, ReportController& reports)
    : work_(work), scan_(scan), reports_(reports) {
    scan_.editsOfClips = [this] { return edits(); };
    scan_.whenMatched = [this] { takeOverFromScan(); };
}

RunInputs ProjectController::inputs() const {
    work_.notices.assertOnMainThread();
    RunInputs inputs = inputsOfScan();
    if (currentURL_) inputs.addFile(currentURL_->path, "the project");
    return inputs;
}

RunInputs ProjectController::inputsOfScan() const {
    RunInputs inputs;
    for (const FileURL& folder : work_.folders()) inputs.addFolder(folder.path);
    if (const auto& report = reports_.aleFileURL()) inputs.addFile(report->path, "the report");
    // Media has standard paths already, and there may be tens of thousands of files.
    std::unordered_set<std::string_view> known;
    const auto add = [&](const FileURL& media) {
        if (known.insert(media.path).second) inputs.files.push_back({media.path, "the media file"});
    };
    if (const auto& found = scan_.discoveryResult())
        for (const auto* urls : {&found->videoURLs, &found->audioURLs}) std::ranges::for_each(*urls, add);
    for (const SyncGroup& group : work_.syncGroups()) {
        add(group.video.url);
        for (const AudioMatch& match : group.audioMatches) add(match.audio->url);
    }
    for (const WildTrack& track : work_.wildTracks()) add(track.audio.url);
    return inputs;
}

void ProjectController::saveProject(const FileURL& url, OutputPermission permission) {
    work_.notices.assertOnMainThread();
    const OutputGuard guard(OutputKind::project, inputsOfScan(), permission);
    OrvaneSyncProject project =
        projectService_.snapshot(work_.videoFolderURL(), work_.audioFolderURL(), reports_.aleFileURL(),
                                 work_.syncGroups(), work_.environment.clock->date(), work_.scanScope());
    project.sourceCorrections = work_.sourceCorrections();
    if (unapplied_) keepUnapplied(*unapplied_, project);
    projectService_.save(project, url, guard);
    setCurrentURL(url);
}

void ProjectController::setCurrentURL(FileURL url) {
    currentURL_ = std::move(url);
    work_.notify(ImportField::project);
}

platform::Task ProjectController::loadProject(FileURL url) {
    work_.notices.assertOnMainThread();
    return work_.running.add(open(work_.weak(this), std::move(url)));
}

platform::Task ProjectController::open(std::weak_ptr<ProjectController> weak, FileURL url) {
    auto self = weak.lock();
    auto reading = platform::onQueue(*self->work_.documents, self->work_.environment.mainThread,
                                     [url](const std::stop_token& /*stop*/) { return read(url); });
    self.reset();
    const Opened opened = co_await reading; // on failure nothing has changed
    self = weak.lock();
    if (!self) co_return;
    self->scan_.abandonScan();
    const auto scanBefore = self->scan_.scanNumber();
    self->work_.setVideoFolderURL(opened.project->videoFolderPath);
    self->work_.setAudioFolderURL(opened.project->audioFolderPath);
    self->work_.setScanScope(opened.project->scanScope);
    self->work_.setSourceCorrections(opened.project->sourceCorrections);
    self->unapplied_ = opened.project;
    if (opened.project->aleFilePath) {
        const platform::Task loading = self->reports_.loadALEOfProject(*opened.project->aleFilePath);
        self.reset();
        co_await loading;
        self = weak.lock();
        if (!self || self->scan_.scanNumber() != scanBefore) co_return;
    }
    if (opened.hasFolders && self->scan_.canScan()) {
        const auto scanning = self->scan_.startScan();
        const auto scanNumber = self->scan_.scanNumber();
        self.reset();
        co_await scanning;
        self = weak.lock();
        if (!self || self->scan_.scanNumber() != scanNumber) co_return;
        self->layEditsOverClipsThatStayed();
    }
    self->setCurrentURL(std::move(url));
}

std::vector<FileURL> ProjectController::clipsNotFound() const {
    std::vector<FileURL> videos;
    if (unapplied_)
        for (const PersistedGroup& entry : unapplied_->groups) videos.push_back(entry.videoPath);
    return videos;
}

void ProjectController::clear() {
    unapplied_.reset();
    tracksLeftOut_.clear();
}

/// Where a project waits for its clips, its edits go over those that a scan has made.
ScanController::EditOfClips ProjectController::edits() {
    tracksLeftOutByScan_ = std::make_shared<std::vector<FileURL>>();
    if (!unapplied_) return nullptr;
    return [service = projectService_, project = unapplied_, leftOut = tracksLeftOutByScan_](
               SyncGroupList& groups, const std::vector<MediaAsset>& scannedAudio) {
        *leftOut = lay(service, *project, groups, scannedAudio);
    };
}

/// Entries whose clips are still not there wait on.
void ProjectController::takeOverFromScan() {
    tracksLeftOut_ = std::move(*tracksLeftOutByScan_);
    if (!unapplied_) return;
    std::unordered_set<FileURL> found;
    for (const SyncGroup& group : work_.syncGroups()) found.insert(group.video.url);
    auto waiting = std::make_shared<OrvaneSyncProject>(*unapplied_);
    std::erase_if(waiting->groups,
                  [&](const PersistedGroup& entry) { return found.contains(entry.videoPath); });
    unapplied_ = waiting->groups.empty() ? nullptr : std::move(waiting);
}

/// A scan that finds no file at all leaves the clips of earlier work. They get the project's edits, which
/// still wait for their media.
void ProjectController::layEditsOverClipsThatStayed() {
    const auto& found = scan_.discoveryResult();
    if (!unapplied_ || !found || !found->isEmpty() || work_.syncGroups().empty()) return;
    std::vector<MediaAsset> wild;
    for (const WildTrack& track : work_.wildTracks()) wild.push_back(track.audio);
    work_.changeClips(
        [&](SyncGroupList& groups) { tracksLeftOut_ = lay(projectService_, *unapplied_, groups, wild); });
}

} // namespace orvane
