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

} // namespace

ProjectController::ProjectController(OpenWork& work, ScanController& scan, ReportController& reports)
    : work_(work), scan_(scan), reports_(reports) {
    scan_.whenMatched = [this] { applyEdits(); };
}

RunInputs ProjectController::inputs() const {
    work_.notices.assertOnMainThread();
    RunInputs inputs = inputsOfScan();
    if (currentURL_) inputs.addFile(currentURL_->path, "the project");
    return inputs;
}

RunInputs ProjectController::inputsOfScan() const {
    RunInputs inputs;
    for (const auto& folder : {work_.videoFolderURL(), work_.audioFolderURL()})
        if (folder) inputs.addFolder(folder->path);
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
                                 work_.syncGroups(), work_.environment.clock->date());
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
    return open(work_.weak(this), std::move(url));
}

platform::Task ProjectController::open(std::weak_ptr<ProjectController> weak, FileURL url) {
    OrvaneSyncProject project = ProjectService().load(url); // on failure nothing has changed
    auto self = weak.lock();
    if (!self) co_return;
    OpenWork& work = self->work_;
    self->scan_.abandonScan();
    work.setVideoFolderURL(project.videoFolderPath);
    work.setAudioFolderURL(project.audioFolderPath);
    if (project.aleFilePath) self->reports_.loadALEOfProject(*project.aleFilePath);
    self->unapplied_ = std::move(project);
    if (isThere(work.videoFolderURL()) && isThere(work.audioFolderURL()) && self->scan_.canScan()) {
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

void ProjectController::layOverClips() {
    work_.changeClips([&](SyncGroupList& groups) {
        projectService_.applyEdits(*unapplied_, groups);
        AudioByURL known;
        for (const SyncGroup& group : groups)
            for (const AudioMatch& match : group.audioMatches) known[match.audio->url] = &*match.audio;
        for (const WildTrack& track : work_.wildTracks()) known[track.audio.url] = &track.audio;
        if (const auto& scanned = scan_.scanResult())
            for (const MediaAsset& audio : scanned->audioAssets) known[audio.url] = &audio;
        tracksLeftOut_ = fitTracksToRecordings(*unapplied_, groups, known);
    });
}

/// Where a project waits for its clips, its edits go over those that a scan has made; the others wait on.
void ProjectController::applyEdits() {
    tracksLeftOut_.clear();
    if (!unapplied_) return;
    layOverClips();
    std::unordered_set<FileURL> found;
    for (const SyncGroup& group : work_.syncGroups()) found.insert(group.video.url);
    auto& waiting = unapplied_->groups;
    std::erase_if(waiting, [&](const PersistedGroup& entry) { return found.contains(entry.videoPath); });
    if (waiting.empty()) unapplied_.reset();
}

/// A scan that finds no file at all leaves the clips of earlier work. They get the project's edits, which
/// still wait for their media.
void ProjectController::layEditsOverClipsThatStayed() {
    const auto& found = scan_.discoveryResult();
    if (!unapplied_ || !found || !found->isEmpty() || work_.syncGroups().empty()) return;
    layOverClips();
}

} // namespace orvane
